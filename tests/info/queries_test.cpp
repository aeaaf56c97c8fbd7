// query, card and dump: what is asked of the library, and what is printed of its answers.

#include <string>
#include <vector>

#include "console_support.h"
#include "tovira_parse/handlers.h"

namespace info_test
{
namespace
{

using console_test::call;
using console_test::ConsoleTest;
using console_test::kBadArgumentLine;
using console_test::kBadCommandLine;
using console_test::kModeRefusedLine;
using console_test::Outcome;
using console_test::runLine;
using console_test::runOnce;
using console_test::takeDeviceCalls;
using testing::ElementsAre;
using testing::IsEmpty;

class QueryTest : public ConsoleTest
{
protected:
    QueryTest() { recording_vek::outputs().query_report = kReport; }

    static inline const std::string kReport = "axi frequency: 100%d MHz\n\tvpu \\n";
};

TEST_F(QueryTest, PrintsTheReportOfEverythingAsItIs)
{
    for (const char* text : {"query", "query ", " query,\t\r\n"}) {
        EXPECT_EQ(call(doQuery, text), (Outcome{0, kReport})) << text;
        EXPECT_THAT(recording_vek::calls(), ElementsAre("vekQueryInfo(\"\")")) << text;
        recording_vek::reset();
        recording_vek::outputs().query_report = kReport;
    }
}

TEST_F(QueryTest, AddsNoLineEnd)
{
    recording_vek::outputs().query_report = "0x201";
    EXPECT_EQ(call(doQuery, "query id"), (Outcome{0, "0x201"}));
    recording_vek::outputs().query_report = "";
    EXPECT_EQ(call(doQuery, "query id"), Outcome{});
}

struct Keyword {
    const char* typed;
    const char* passed;
};

class QueryKeywordTest : public QueryTest, public testing::WithParamInterface<Keyword>
{
};

TEST_P(QueryKeywordTest, IsPassedInUpperCase)
{
    EXPECT_EQ(call(doQuery, GetParam().typed), (Outcome{0, kReport}));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekQueryInfo(\"" + std::string(GetParam().passed) + "\")"));
}

INSTANTIATE_TEST_SUITE_P(Keywords, QueryKeywordTest,
                         testing::Values(Keyword{"query id", "ID"}, Keyword{"query axi", "AXI"},
                                         Keyword{"query AXI", "AXI"}, Keyword{"QUERY aXi", "AXI"},
                                         Keyword{"query vpu", "VPU"}, Keyword{"query 3d", "3D"},
                                         Keyword{"query 2d", "2D"}, Keyword{"query ddr", "DDR"},
                                         Keyword{"query 3dcore", "3DCORE"}, Keyword{"query 2dcore", "2DCORE"},
                                         Keyword{"query gop", "GOP"}, Keyword{"query vram", "VRAM"},
                                         Keyword{"query card", "CARD"}, Keyword{"query channel", "CHANNEL"},
                                         Keyword{"query bandwidth", "BANDWIDTH"}, Keyword{"query load", "LOAD"},
                                         Keyword{"query load 3", "LOAD"}, Keyword{"query load,3", "LOAD"},
                                         Keyword{"query,\tload\r\n", "LOAD"}, Keyword{"query load\n3", "LOAD"},
                                         Keyword{"query nonsense", "NONSENSE"}, Keyword{"query `az{[@", "`AZ{[@"},
                                         Keyword{"query \xe4z", "\xe4Z"}, Keyword{"query abcdefghij", "ABCDEFGHIJ"},
                                         Keyword{"query abcdefghij klm", "ABCDEFGHIJ"}));

TEST_F(QueryTest, RefusesAKeywordThatDoesNotFitItsField)
{
    EXPECT_EQ(call(doQuery, "query abcdefghijk"), Outcome{-2});
    EXPECT_EQ(call(doQuery, "query " + std::string(240, 'a')), Outcome{-2});
    EXPECT_THAT(recording_vek::calls(), IsEmpty());
    EXPECT_EQ(runLine("query abcdefghijk"), (Outcome{-2, std::string(kBadArgumentLine)}));
}

TEST_F(QueryTest, RefusesWhatTheLibraryRefuses)
{
    for (const int result : {-1, -3, -100}) {
        recording_vek::setResult("vekQueryInfo", result);
        EXPECT_EQ(call(doQuery, "query id"), Outcome{-2}) << result;
        EXPECT_EQ(runLine("query id"), (Outcome{-2, std::string(kBadArgumentLine)})) << result;
    }
}

TEST_F(QueryTest, TakesAnyOtherResultAsSuccess)
{
    for (const int result : {1, 2, 1000}) {
        recording_vek::setResult("vekQueryInfo", result);
        EXPECT_EQ(call(doQuery, "query id"), (Outcome{0, kReport})) << result;
    }
}

TEST_F(QueryTest, PrintsTheLongestReport)
{
    const std::string report = std::string(1022, 'x') + "\n";
    recording_vek::outputs().query_report = report;
    EXPECT_EQ(call(doQuery, "query"), (Outcome{0, report}));
}

TEST_F(QueryTest, CutsAReportWithoutItsEnd)
{
    for (const std::size_t length : {1024U, 1025U, 5000U}) {
        recording_vek::outputs().query_report = std::string(length, 'x');
        EXPECT_EQ(call(doQuery, "query"), (Outcome{0, std::string(1024, 'x')})) << length;
    }
}

TEST_F(QueryTest, RunsAgainAtAnEmptyLine)
{
    EXPECT_EQ(runLine("query load"), (Outcome{0, kReport}));
    EXPECT_EQ(runLine(""), (Outcome{0, kReport}));
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekQueryInfo(\"LOAD\")", "vekQueryInfo(\"LOAD\")"));
    EXPECT_EQ(call(doQuery, "query load", 1), call(doQuery, "query load", 0));
}

constexpr int kCardCount = 8;  // The library's query item.

class CardTest : public ConsoleTest
{
protected:
    static void present(int count, int selected)
    {
        recording_vek::reset();
        recording_vek::outputs().query_values = {{kCardCount, count}};
        recording_vek::outputs().selected_card = selected;
    }

    static Outcome outOfRange(const std::string& index, int count, int selected)
    {
        return {-2, "card index " + index + " is out of range [0, " + std::to_string(count) +
                        "). current card index: " + std::to_string(selected) + "\n"};
    }
};

TEST_F(CardTest, TellsTheSelectedCard)
{
    for (const int selected : {0, 3, 11}) {
        present(20, selected);
        const std::string line = "current card index: " + std::to_string(selected) + "\n";
        EXPECT_EQ(call(doCard, "card"), (Outcome{0, line}));
        EXPECT_EQ(call(doCard, "CARD ,\t\r\n"), (Outcome{0, line}));
        EXPECT_THAT(recording_vek::calls(), ElementsAre("vekGetCard()", "vekGetCard()"));
    }
}

TEST_F(CardTest, SelectsAnotherCard)
{
    struct Selection {
        const char* typed;
        int index;
    };
    for (const Selection& selection :
         {Selection{"card 0", 0}, Selection{"card 2", 2}, Selection{"card 1f", 31}, Selection{"card 0X1F", 31},
          Selection{"card 0x1f", 31}, Selection{"card,2,9", 2}, Selection{"card\t2\r\n", 2}, Selection{"card zz", 0},
          // As every number: what is none is 0, and of a long one the low 32 bits count.
          Selection{"card -", 0}, Selection{"card --1", 0}, Selection{"card 100000002", 2}}) {
        present(32, 1);
        const std::string index = std::to_string(selection.index);
        EXPECT_EQ(call(doCard, selection.typed), (Outcome{0, "set card index: " + index + "\n"})) << selection.typed;
        EXPECT_THAT(recording_vek::calls(),
                    ElementsAre("vekGetCard()", "vekQueryInt(8, 1)", "vekSetCard(" + index + ")"))
            << selection.typed;
    }
}

TEST_F(CardTest, LeavesTheSelectedCardAlone)
{
    present(0, 0);
    EXPECT_EQ(call(doCard, "card 0"), (Outcome{0, "set card index: 0\n"}));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekGetCard()"));
    present(0, 16);
    EXPECT_EQ(call(doCard, "card 10"), (Outcome{0, "set card index: 16\n"}));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekGetCard()"));
}

TEST_F(CardTest, RefusesAnIndexOutOfRange)
{
    struct Refusal {
        const char* typed;
        const char* index;
        int count;
        int selected;
    };
    for (const Refusal& refusal :
         {Refusal{"card 1", "1", 1, 0}, Refusal{"card 2", "2", 2, 1}, Refusal{"card 3", "3", 2, 1},
          Refusal{"card 10", "16", 2, 1}, Refusal{"card 7fffffff", "2147483647", 2, 1},
          Refusal{"card ffffffff", "-1", 2, 0}, Refusal{"card 80000000", "-2147483648", 2, 0},
          Refusal{"card -1", "-1", 1, 0}, Refusal{"card -1", "-1", 2, 1}, Refusal{"card -0x1f", "-31", 40, 1},
          Refusal{"card -80000000", "-2147483648", 2, 0}}) {
        present(refusal.count, refusal.selected);
        EXPECT_EQ(call(doCard, refusal.typed), outOfRange(refusal.index, refusal.count, refusal.selected))
            << refusal.typed;
        EXPECT_THAT(recording_vek::calls(),
                    ElementsAre("vekGetCard()", "vekQueryInt(8, " + std::to_string(refusal.selected) + ")"))
            << refusal.typed;
    }
}

TEST_F(CardTest, TakesTheLastCardOfTheRange)
{
    present(2, 0);
    EXPECT_EQ(call(doCard, "card 1"), (Outcome{0, "set card index: 1\n"}));
    EXPECT_EQ(recording_vek::calls().back(), "vekSetCard(1)");
}

TEST_F(CardTest, RefusalIsAnInvalidArgument)
{
    present(1, 0);
    Outcome refused = outOfRange("1", 1, 0);
    refused.output += kBadArgumentLine;
    EXPECT_EQ(runLine("card 1"), refused);
}

TEST_F(CardTest, CountsNoCardsWhenTheyCannotBeCounted)
{
    present(4, 1);
    recording_vek::setResult("vekQueryInt", -5);
    EXPECT_EQ(call(doCard, "card 0"), outOfRange("0", 0, 1));
    EXPECT_THAT(recording_vek::calls(), ElementsAre("vekGetCard()", "vekQueryInt(8, 1)"));
}

TEST_F(CardTest, DoesNotLookAtTheResults)
{
    present(4, 1);
    recording_vek::setResult("vekQueryInt", 7);
    recording_vek::setResult("vekSetCard", -5);
    EXPECT_EQ(call(doCard, "card 2"), (Outcome{0, "set card index: 2\n"}));
}

TEST_F(CardTest, HandlesANegativeSelection)
{
    present(2, -1);
    EXPECT_EQ(call(doCard, "card"), (Outcome{0, "current card index: -1\n"}));
    EXPECT_EQ(call(doCard, "card -1"), (Outcome{0, "set card index: -1\n"}));
    EXPECT_EQ(call(doCard, "card 2"), outOfRange("2", 2, -1));
}

TEST_F(CardTest, RunsAgainAtAnEmptyLine)
{
    present(2, 0);
    EXPECT_EQ(runLine("card"), (Outcome{0, "current card index: 0\n"}));
    EXPECT_EQ(runLine(""), (Outcome{0, "current card index: 0\n"}));
}

class DumpTest : public ConsoleTest
{
};

TEST_F(DumpTest, HasTheFreeNodesPrinted)
{
    for (const char* text : {"dump vramfree", "dump VramFree", "DUMP VRAMFREE", "dump,\tvramfree, x"}) {
        EXPECT_EQ(call(doDump, text), Outcome{}) << text;
        EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDumpVramFree()")) << text;
    }
    EXPECT_EQ(recording_vek::calls().size(), 4U);
}

TEST_F(DumpTest, RefusesEverythingElse)
{
    for (const char* text : {"dump", "dump ", "", " ,\t", "dump vram", "dump vramfre", "dump vramfreee",
                             "dump x vramfree", "dump vramfree\n", "dump vramfree\r"}) {
        EXPECT_EQ(call(doDump, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(recording_vek::calls(), IsEmpty());
}

TEST_F(DumpTest, ReturnsTheResultAsItsStatus)
{
    for (const int result : {0, 1, 2, -1, -2, -3, -4, -100}) {
        recording_vek::setResult("vekDumpVramFree", result);
        EXPECT_EQ(call(doDump, "dump vramfree"), Outcome{result});
    }
}

TEST_F(DumpTest, ResultDecidesTheMessage)
{
    recording_vek::setResult("vekDumpVramFree", -1);
    EXPECT_EQ(runLine("dump vramfree"), (Outcome{-1, std::string(kBadCommandLine)}));
    recording_vek::setResult("vekDumpVramFree", -2);
    EXPECT_EQ(runLine("dump vramfree"), (Outcome{-2, std::string(kBadArgumentLine)}));
    recording_vek::setResult("vekDumpVramFree", -3);
    EXPECT_EQ(runLine("dump vramfree"), (Outcome{-3, std::string(kModeRefusedLine)}));
    recording_vek::setResult("vekDumpVramFree", -4);
    EXPECT_EQ(runLine("dump vramfree"), Outcome{});
}

TEST_F(DumpTest, RunsAgainAtAnEmptyLine)
{
    EXPECT_EQ(runLine("dump vramfree"), Outcome{});
    EXPECT_EQ(runLine(""), Outcome{});
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("vekDumpVramFree()", "vekDumpVramFree()"));
}

TEST(InfoCommandsRunOnce, RunTheSameHandlers)
{
    recording_vek::reset();
    EXPECT_EQ(runOnce("card;dump vramfree"), (Outcome{0, "current card index: 0\n"}));
    EXPECT_THAT(recording_vek::deviceCalls(), ElementsAre("vekGetCard()", "vekDumpVramFree()"));
}

}  // namespace
}  // namespace info_test
