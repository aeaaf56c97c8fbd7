// The line editor key by key: what it prints, what the user sees, what it returns, and what it keeps in its history.

#include "tovira_parse/line_editor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "editor_session.h"
#include "screen.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kLongest = 255;
constexpr int kHistorySize = 128;

std::string repeated(const std::string& text, std::size_t count)
{
    std::string all;
    while (count-- > 0) {
        all += text;
    }
    return all;
}

std::string blanks(std::size_t count)
{
    return std::string(count, ' ');
}

std::string backspaces(std::size_t count)
{
    return std::string(count, '\b');
}

/** A line of the given length in which neighbouring characters differ. */
std::string longLine(std::size_t length)
{
    std::string line;
    while (line.size() < length) {
        line += static_cast<char>('a' + line.size() % 26);
    }
    return line;
}

/** The only line of a session that ends with Enter. */
std::string lineOf(const std::string& keys)
{
    const std::vector<std::string> lines = texts(play(keys + kEnter));
    EXPECT_EQ(lines.size(), 1U) << readable(keys);
    return lines.empty() ? "" : lines.front();
}

/** What the last key of the sequence makes the editor print. */
std::string printedByLast(const std::string& keys)
{
    const Session session = play(keys);
    return session.empty() || session.back().shown.size() < 2 ? "" : session.back().shown.end()[-2];
}

/** Row and cursor as a user sees them after the keys: the row's text with a '|' at the cursor. */
std::string seenAfter(const std::string& keys)
{
    Screen screen(6, 300);
    screen.feed(output(play(keys)));
    std::string row = screen.currentRow();
    const auto column = static_cast<std::size_t>(screen.cursorColumn());
    row.resize(std::max(row.size(), column), ' ');
    return row.insert(column, "|");
}

/** The line shown after each of the last history moves of a sequence. */
std::vector<std::string> recalled(const std::string& keys, const std::vector<std::string>& moves)
{
    std::string all = keys;
    std::vector<std::string> lines;
    for (const std::string& move : moves) {
        all += move;
        const std::string printed = printedByLast(all);
        lines.push_back(printed.substr(printed.rfind('>') + 1));
    }
    return lines;
}

/** Types and enters "l<first>" to "l<last>", all different and none the beginning of another. */
std::string numberedLines(int first, int last)
{
    std::string keys;
    for (int i = first; i <= last; ++i) {
        keys += "l" + std::to_string(i) + "." + kEnter;
    }
    return keys;
}

TEST(LineEditor, PromptsAtTheStartOfEveryLine)
{
    const Session session = play(kEnter + kEnter);
    ASSERT_EQ(session.size(), 2U);
    EXPECT_EQ(session[0].shown.front(), ">");
    EXPECT_EQ(session[1].shown.front(), ">");
    EXPECT_EQ(output(session), ">\r\n>\r\n");
}

TEST(LineEditor, EchoesAndReturnsWhatIsTyped)
{
    const Session session = play("rrb 0" + kEnter);
    ASSERT_EQ(session.size(), 1U);
    EXPECT_THAT(session[0].shown, ElementsAre(">", "r", "r", "b", " ", "0", "\r\n"));
    EXPECT_EQ(session[0].result, 0);
    EXPECT_EQ(session[0].text(), "rrb 0");
}

TEST(LineEditor, EndsTheLineWithCarriageReturnAndWithLineFeed)
{
    EXPECT_THAT(texts(play("a\rb\n")), ElementsAre("a", "b"));
    EXPECT_EQ(output(play("a\rb\n")), ">a\r\n>b\r\n");
}

TEST(LineEditor, EndsTheWholeLineWhereverTheCursorIs)
{
    EXPECT_EQ(lineOf("abc" + kHome), "abc");
    EXPECT_EQ(lineOf("abc" + kLeft), "abc");
}

TEST(LineEditor, StartsEveryLineEmpty)
{
    EXPECT_THAT(texts(play("abc" + kEnter + kEnter + "d" + kEnter)), ElementsAre("abc", "", "d"));
    EXPECT_THAT(texts(play("abc" + kControlC + kEnter)), ElementsAre(""));
}

TEST(LineEditor, StartsEveryLineOutsideOfEscapeSequences)
{
    for (const std::string& begun : {kEscape, kEscape + "[", kEscape + "x", kEscape + "[1", kEscape + "[4"}) {
        EXPECT_THAT(texts(play(begun + kEnter + "~A" + kEnter)), ElementsAre("", "~A")) << readable(begun);
    }
}

TEST(LineEditor, EndsAtControlCWithoutAnyOutput)
{
    const Session session = play("ab" + kControlC);
    ASSERT_EQ(session.size(), 1U);
    EXPECT_EQ(session[0].result, 1);
    EXPECT_EQ(session[0].output(), ">ab");
    EXPECT_EQ(play(kControlC).front().result, 1);
}

TEST(LineEditor, EndsAtControlCInEveryStateButDirectlyAfterEscape)
{
    for (const std::string& begun :
         {std::string(), kEscape + "[", kEscape + "x", kEscape + kControlC, kEscape + "[1", kEscape + "[4"}) {
        const Session session = play(begun + kControlC + "a" + kEnter);
        ASSERT_EQ(session.size(), 2U) << readable(begun);
        EXPECT_EQ(session[0].result, 1) << readable(begun);
        EXPECT_EQ(session[0].output(), ">") << readable(begun);
        EXPECT_EQ(session[1].text(), "a") << readable(begun);
    }
}

TEST(LineEditor, SwallowsControlCDirectlyAfterEscape)
{
    EXPECT_EQ(lineOf(kEscape + kControlC + "xy"), "xy");
    EXPECT_EQ(lineOf("a" + kEscape + kControlC + kBackspace), "");
}

TEST(LineEditor, MovesLeftToTheStartAndNoFurther)
{
    EXPECT_EQ(printedByLast("ab" + kLeft), "\b");
    EXPECT_EQ(seenAfter("ab" + kLeft), ">a|b");
    EXPECT_EQ(seenAfter("ab" + kLeft + kLeft), ">|ab");
    EXPECT_EQ(printedByLast("ab" + kLeft + kLeft + kLeft), "");
    EXPECT_EQ(printedByLast(kLeft), "");
}

TEST(LineEditor, MovesRightToTheEndAndNoFurther)
{
    EXPECT_EQ(printedByLast("ab" + kHome + kRight), "a");
    EXPECT_EQ(seenAfter("ab" + kHome + kRight), ">a|b");
    EXPECT_EQ(printedByLast("ab" + kHome + kRight + kRight), "b");
    EXPECT_EQ(printedByLast("ab" + kHome + kRight + kRight + kRight), "");
    EXPECT_EQ(printedByLast(kRight), "");
}

TEST(LineEditor, GoesHome)
{
    EXPECT_EQ(printedByLast("abc" + kHome), "\r>");
    EXPECT_EQ(seenAfter("abc" + kLeft + kHome), ">|abc");
    EXPECT_EQ(printedByLast("abc" + kHome + kHome), "");
    EXPECT_EQ(printedByLast(kHome), "");
}

TEST(LineEditor, GoesToTheEnd)
{
    EXPECT_EQ(printedByLast("abc" + kHome + kEnd), "abc");
    EXPECT_EQ(printedByLast("abc" + kLeft + kEnd), "c");
    EXPECT_EQ(seenAfter("abc" + kHome + kRight + kEnd), ">abc|");
    EXPECT_EQ(printedByLast("abc" + kEnd), "");
    EXPECT_EQ(printedByLast(kEnd), "");
}

TEST(LineEditor, InsertsInsideTheLine)
{
    EXPECT_EQ(printedByLast("abc" + kLeft + kLeft + "X"), "Xbc\b\b");
    EXPECT_EQ(seenAfter("abc" + kLeft + kLeft + "X"), ">aX|bc");
    EXPECT_EQ(lineOf("abc" + kLeft + kLeft + "XY"), "aXYbc");
    EXPECT_EQ(lineOf("abc" + kHome + "X"), "Xabc");
}

TEST(LineEditor, DeletesAtTheEnd)
{
    for (const std::string& key : {kBackspace, kDelete}) {
        EXPECT_EQ(printedByLast("abc" + key), "\b \b");
        EXPECT_EQ(seenAfter("abc" + key), ">ab|");
        EXPECT_EQ(lineOf("abc" + key + "d"), "abd");
    }
}

TEST(LineEditor, DeletesInsideTheLine)
{
    for (const std::string& key : {kBackspace, kDelete}) {
        EXPECT_EQ(printedByLast("abcd" + kLeft + kLeft + key), "\bcd \b\b\b");
        EXPECT_EQ(seenAfter("abcd" + kLeft + kLeft + key), ">a|cd");
        EXPECT_EQ(lineOf("abcd" + kLeft + kLeft + key + "X"), "aXcd");
    }
}

TEST(LineEditor, DeletesNothingAtTheStart)
{
    for (const std::string& key : {kBackspace, kDelete}) {
        EXPECT_EQ(printedByLast(key), "");
        EXPECT_EQ(printedByLast("ab" + kHome + key), "");
        EXPECT_EQ(lineOf("ab" + kHome + key), "ab");
    }
}

TEST(LineEditor, InsertsEveryByteThatIsNoKey)
{
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        if ((kEnter + "\n" + kControlC + kEscape + kBackspace + kDelete).find(text) == std::string::npos) {
            EXPECT_EQ(lineOf(text), text) << byte;
        }
    }
}

TEST(LineEditor, EchoesANulByteThatThenEndsTheText)
{
    const Session session = play(std::string("a\0b\r", 4));
    ASSERT_EQ(session.size(), 1U);
    EXPECT_EQ(session[0].output(), std::string(">a\0b\r\n", 6));
    EXPECT_EQ(session[0].buffer.substr(0, 4), std::string("a\0b\0", 4));
}

struct SequenceCase {
    std::string keys;
    std::string line;
};

TEST(LineEditor, EndsBrokenOffSequencesWithTheNextByte)
{
    const SequenceCase cases[] = {
        // A byte other than '[' after ESC is dropped, and the one after it is typed.
        {kEscape + "xy", "y"},
        {kEscape + "xyz", "yz"},
        {kEscape + "OA", "A"},
        {kEscape + "x[A", "[A"},
        {"ab" + kEscape + "x" + kBackspace, "a"},
        {kEscape + kBackspace + "y", "y"},
        {kEscape + "x~", "~"},
        // A byte without a meaning after ESC '[' is typed.
        {kEscape + "[x", "x"},
        {kEscape + "[[", "["},
        {kEscape + "[~", "~"},
        {kEscape + "[2~", "2~"},
        {kEscape + "[H", "H"},
        {kEscape + "[a", "a"},
        {"ab" + kEscape + "[" + kBackspace, "a"},
        {"ab" + kEscape + "[" + kDelete, "a"},
        // A byte other than '~' after the digit is typed, and the digit is not.
        {"ab" + kEscape + "[1x", "abx"},
        {"ab" + kEscape + "[4x", "abx"},
        {"ab" + kEscape + "[1" + kBackspace, "a"},
        {"ab" + kEscape + "[1A", "abA"},
        {"ab" + kEscape + "[14~x", "ab4~x"},
        {"ab" + kEscape + "[1x~y", "abx~y"},
        // '~' is a key of its own only at the end of Home and End.
        {"~", "~"},
        {kHome + "~", "~"},
    };
    for (const SequenceCase& given : cases) {
        EXPECT_EQ(lineOf(given.keys), given.line) << readable(given.keys);
    }
}

TEST(LineEditor, RestartsASequenceAtEscape)
{
    const SequenceCase cases[] = {
        {"ab" + kEscape + kLeft + "X", "aXb"},
        {"ab" + kEscape + "[" + kLeft + "X", "aXb"},
        {"ab" + kEscape + "x" + kLeft + "X", "aXb"},
        {"ab" + kEscape + "[1" + kLeft + "X", "aXb"},
        {"ab" + kEscape + "[4" + kHome + "X", "Xab"},
        {"ab" + kLeft + kEscape + "[1" + kEnd + "X", "abX"},
        {"ab" + kEscape + "[1" + kEscape + "x~", "ab~"},
        {"ab" + kEscape + "[1" + kEscape + "[x~", "abx~"},
        {kEscape + kEscape + "xy", "y"},
    };
    for (const SequenceCase& given : cases) {
        EXPECT_EQ(lineOf(given.keys), given.line) << readable(given.keys);
    }
}

TEST(LineEditor, EndsTheLineInEveryState)
{
    for (const std::string& begun : {kEscape, kEscape + "[", kEscape + "x", kEscape + "[1", kEscape + "[4"}) {
        for (const std::string& key : {std::string("\r"), std::string("\n")}) {
            const Session session = play("ab" + begun + key);
            ASSERT_EQ(session.size(), 1U) << readable(begun);
            EXPECT_EQ(session[0].result, 0) << readable(begun);
            EXPECT_EQ(session[0].text(), "ab") << readable(begun);
            EXPECT_EQ(session[0].output(), ">ab\r\n") << readable(begun);
        }
    }
}

TEST(LineEditor, PrintsNothingWithinASequence)
{
    const Session session = play("a" + kEscape + "[1~" + kEscape + "[4~" + kEscape + "xy");
    ASSERT_EQ(session.size(), 1U);
    EXPECT_THAT(session[0].shown, ElementsAre(">", "a", "", "", "", "\r>", "", "", "", "a", "", "", "y", ""));
}

TEST(LineEditor, HoldsTheLongestLine)
{
    for (const std::size_t length : {kLongest - 1, kLongest}) {
        const std::string line = longLine(length);
        EXPECT_EQ(output(play(line + kEnter)), ">" + line + "\r\n");
        EXPECT_EQ(lineOf(line), line);
    }
}

TEST(LineEditor, EchoesAndLosesWhatIsTypedPastTheLongestLine)
{
    const std::string line = longLine(kLongest);
    for (const std::size_t excess : {1U, 2U, 300U}) {
        const std::string more(excess, 'Z');
        EXPECT_EQ(output(play(line + more + kEnter)), ">" + line + more + "\r\n");
        EXPECT_EQ(lineOf(line + more), line);
    }
}

TEST(LineEditor, DeletesFromAFullLine)
{
    const std::string line = longLine(kLongest);
    EXPECT_EQ(printedByLast(line + "Z" + kBackspace), "\b \b");
    EXPECT_EQ(lineOf(line + "Z" + kBackspace + "Y"), line.substr(0, kLongest - 1) + "Y");
}

TEST(LineEditor, PushesTheEndOutWhenInsertingIntoAFullLine)
{
    const std::string line = longLine(kLongest);
    EXPECT_EQ(printedByLast(line + kHome + "X"), "X" + line + backspaces(kLongest));
    EXPECT_EQ(lineOf(line + kHome + "X"), "X" + line.substr(0, kLongest - 1));
    EXPECT_EQ(printedByLast(line + kLeft + "X"), "X" + line.substr(kLongest - 1) + "\b");
    EXPECT_EQ(lineOf(line + kLeft + "X"), line.substr(0, kLongest - 1) + "X");
    EXPECT_EQ(lineOf(line + kLeft + "XYZ"), line.substr(0, kLongest - 1) + "X");
}

TEST(LineEditor, FillsTheLineByInsertingInside)
{
    const std::string line = longLine(kLongest - 1);
    EXPECT_EQ(lineOf(line + kHome + "X"), "X" + line);
    EXPECT_EQ(seenAfter(line + kHome + "X"), ">X|" + line);
    EXPECT_EQ(lineOf(line + kLeft + "X"), line.substr(0, kLongest - 2) + "X" + line.substr(kLongest - 2));
}

TEST(LineEditor, StopsAtTheBoundsOfAFullLine)
{
    const std::string line = longLine(kLongest);
    EXPECT_EQ(printedByLast(line + "Z" + kRight), "");
    EXPECT_EQ(printedByLast(line + kHome + repeated(kRight, kLongest)), line.substr(kLongest - 1));
    EXPECT_EQ(printedByLast(line + kHome + repeated(kRight, kLongest + 1)), "");
    EXPECT_EQ(printedByLast(line + repeated(kLeft, kLongest)), "\b");
    EXPECT_EQ(printedByLast(line + repeated(kLeft, kLongest + 1)), "");
}

TEST(LineEditor, RecallsAndClearsAFullLine)
{
    const std::string line = longLine(kLongest);
    EXPECT_EQ(printedByLast(line + kEnter + kUp), "\r \r>" + line);
    EXPECT_THAT(texts(play(line + kEnter + kUp + kEnter)), ElementsAre(line, line));
    EXPECT_EQ(printedByLast(line + kEnter + kUp + kUp), "\r" + blanks(kLongest + 1) + "\r>");
}

TEST(LineEditor, ReadsThatGiveNothingCountAsByte255)
{
    EXPECT_EQ(play(std::vector<int>{'a', kNoByte, '\r'}).front().text(), "a\xff");
    EXPECT_EQ(play(std::vector<int>{27, kNoByte, 'b', '\r'}).front().text(), "b");
}

std::vector<int> emptyReads(std::size_t count)
{
    return std::vector<int>(count, kNoByte);
}

TEST(LineEditor, EndsAfterALineOfReadsThatGiveNothing)
{
    const Session session = play(emptyReads(256));
    ASSERT_EQ(session.size(), 1U);
    EXPECT_EQ(session[0].result, 1);
    EXPECT_EQ(session[0].output(), ">" + std::string(255, '\xff'));
    EXPECT_EQ(session[0].shown.size(), 257U);
}

TEST(LineEditor, GoesOnAfterOneEmptyReadLess)
{
    std::vector<int> keys = emptyReads(255);
    keys.push_back('\r');
    const Session session = play(keys);
    ASSERT_EQ(session.size(), 1U);
    EXPECT_EQ(session[0].result, 0);
    EXPECT_EQ(session[0].text(), std::string(255, '\xff'));
}

TEST(LineEditor, CountsEmptyReadsAnewAfterAnyByte)
{
    for (const int byte : {int{'x'}, 0xff, 27, 0}) {
        std::vector<int> keys = emptyReads(255);
        keys.push_back(byte);
        keys.insert(keys.end(), 255, kNoByte);
        keys.push_back('\r');
        const Session session = play(keys);
        ASSERT_EQ(session.size(), 1U) << byte;
        EXPECT_EQ(session[0].result, 0) << byte;
    }
}

TEST(LineEditor, CountsEmptyReadsInEveryState)
{
    std::vector<int> keys = keysOf(kEscape);
    keys.insert(keys.end(), 256, kNoByte);
    const Session session = play(keys);
    ASSERT_EQ(session.size(), 1U);
    EXPECT_EQ(session[0].result, 1);
    EXPECT_EQ(session[0].output(), ">" + std::string(254, '\xff'));
}

TEST(LineEditor, TakesByte255AsACharacterHoweverOftenItComes)
{
    EXPECT_EQ(lineOf(std::string(300, '\xff')), std::string(255, '\xff'));
}

TEST(LineHistory, ShowsAnEmptyLineWhenThereIsNone)
{
    EXPECT_EQ(printedByLast(kUp), "\r \r>");
    EXPECT_EQ(printedByLast(kDown), "\r \r>");
    EXPECT_EQ(printedByLast("abc" + kUp), "\r    \r>");
    EXPECT_EQ(printedByLast("abc" + kDown), "\r    \r>");
    EXPECT_EQ(lineOf("abc" + kUp + "d"), "d");
    EXPECT_EQ(lineOf("abc" + kDown + "d"), "d");
}

TEST(LineHistory, SelectsNothingByMovingDownInAnEmptyHistory)
{
    // With nothing selected Up empties the line, with a free slot selected it leaves the line alone.
    EXPECT_EQ(printedByLast(kDown + "abc" + kUp), "\r    \r>");
    EXPECT_EQ(printedByLast(kDown + kDown + "abc" + kUp), "\r    \r>");
}

// Down selects the free slot, the first one; Up steps back from it to nothing, which empties the line.
TEST(LineHistory, GoesBeforeTheFirstSlotInAnEmptyHistory)
{
    EXPECT_EQ(printedByLast(kUp + kDown + "abc" + kUp), "\r    \r>");
}

TEST(LineHistory, MovesUpFromTheNewestLineToTheOldest)
{
    EXPECT_THAT(recalled("a\rb\rc\r", {kUp, kUp, kUp, kUp, kUp, kDown, kDown}),
                ElementsAre("c", "b", "a", "", "", "a", "b"));
}

TEST(LineHistory, MovesDownAgainToAnEmptyLine)
{
    EXPECT_THAT(recalled("a\rb\rc\r" + kUp + kUp + kUp, {kDown, kDown, kDown, kDown, kUp, kUp}),
                ElementsAre("b", "c", "", "", "c", "b"));
}

TEST(LineHistory, ShowsTheNewestLineFirstWhenMovingDown)
{
    EXPECT_THAT(recalled("a\rb\r", {kDown, kDown, kDown, kUp, kUp}), ElementsAre("b", "", "", "b", "a"));
}

TEST(LineHistory, TurnsAroundBetweenTwoLines)
{
    EXPECT_THAT(recalled("a\rb\rc\rd\r", {kUp, kUp, kDown, kUp, kUp, kDown, kDown, kUp}),
                ElementsAre("d", "c", "d", "c", "b", "c", "d", "c"));
}

TEST(LineHistory, ClearsTheLineThatWasShown)
{
    EXPECT_EQ(printedByLast("first\r"
                            "xy" +
                            kUp),
              "\r   \r>first");
    EXPECT_EQ(printedByLast("first\r" + kUp + kUp), "\r      \r>");
    EXPECT_EQ(printedByLast("first\r" + kUp + kHome + kDown), "\r      \r>");
    EXPECT_EQ(seenAfter("a\rlonger\r" + kUp + kHome + kUp), ">a|");
}

TEST(LineHistory, PutsTheCursorAtTheEndOfARecalledLine)
{
    EXPECT_EQ(seenAfter("abc\rde\r" + kUp), ">de|");
    EXPECT_EQ(lineOf(kUp + "x"), "x");
    EXPECT_THAT(texts(play("abc\r" + kUp + "x" + kEnter)), ElementsAre("abc", "abcx"));
    EXPECT_THAT(texts(play("abc\r" + kUp + kLeft + "x" + kEnter)), ElementsAre("abc", "abxc"));
}

TEST(LineHistory, ShowsTheSelectedLineAgainAfterAnEdit)
{
    EXPECT_THAT(recalled("a\rb\rc\r" + kUp + kUp + "x", {kUp, kUp}), ElementsAre("b", "a"));
    EXPECT_THAT(recalled("a\rb\rc\r" + kDown + "x", {kDown, kDown}), ElementsAre("c", ""));
}

TEST(LineHistory, KeepsTheStoredLineWhenARecalledOneIsEdited)
{
    EXPECT_THAT(recalled("abc\r" + kUp + kBackspace + "X\r", {kUp, kUp}), ElementsAre("abX", "abc"));
}

TEST(LineHistory, ForgetsTheDirectionAtTheEndOfALine)
{
    EXPECT_THAT(recalled("a\rb\rc\r" + kUp + kUp + kEnter, {kDown, kDown}), ElementsAre("b", "c"));
    EXPECT_THAT(recalled("a\rb\rc\r" + kUp + kUp + kUp + kDown + kEnter, {kUp}), ElementsAre("b"));
}

TEST(LineHistory, StoresNoEmptyLine)
{
    EXPECT_THAT(recalled("a\r\r\r", {kUp, kUp}), ElementsAre("a", ""));
    // With nothing stored yet no selected line can be the reason.
    EXPECT_THAT(recalled("\ra\r", {kUp, kUp, kUp}), ElementsAre("a", "", ""));
    EXPECT_THAT(recalled("a\rx" + kBackspace + "\rb\r", {kUp, kUp}), ElementsAre("b", "a"));
}

TEST(LineHistory, StoresARepeatedLineOnce)
{
    EXPECT_THAT(recalled("a\rb\rb\rb\r", {kUp, kUp}), ElementsAre("b", "a"));
}

TEST(LineHistory, StoresNoBeginningOfTheSelectedLine)
{
    EXPECT_THAT(recalled("x\rabc\rab\r", {kUp, kUp}), ElementsAre("abc", "x"));
    EXPECT_THAT(texts(play("abc\rab\r")), ElementsAre("abc", "ab"));
}

TEST(LineHistory, StoresALineThatOnlyBeginsLikeTheSelectedOne)
{
    EXPECT_THAT(recalled("ab\rabc\r", {kUp, kUp}), ElementsAre("abc", "ab"));
}

TEST(LineHistory, StoresALineThatWasRecalledAndEdited)
{
    EXPECT_THAT(recalled("a\rb\r" + kUp + kUp + "x\r", {kUp, kUp, kUp}), ElementsAre("ax", "b", "a"));
}

TEST(LineHistory, DoesNotStoreARecalledLineAgainAndStaysThere)
{
    EXPECT_THAT(recalled("a\rb\rc\r" + kUp + kUp + kEnter, {kUp, kUp}), ElementsAre("b", "a"));
    EXPECT_THAT(recalled("a\rb\rc\r" + kUp + kUp + kEnter, {kDown, kDown, kDown}), ElementsAre("b", "c", ""));
}

TEST(LineHistory, StoresALineEqualToOneThatIsNotSelected)
{
    EXPECT_THAT(recalled("a\rb\ra\r", {kUp, kUp, kUp}), ElementsAre("a", "b", "a"));
}

TEST(LineHistory, KeepsNoLineThatControlCBrokeOff)
{
    EXPECT_THAT(recalled("a\rb" + kControlC, {kUp, kUp}), ElementsAre("a", ""));
}

TEST(LineHistory, LeavesTheLineAloneAtTheFreeSlot)
{
    // Down twice selects the slot after the newest line.
    const std::string atFreeSlot = "a\rb\r" + kDown + kDown;
    EXPECT_EQ(printedByLast(atFreeSlot + kEnter + "xyz" + kUp), "\r    \r>xyz");
    EXPECT_EQ(printedByLast(atFreeSlot + kEnter + "xyz" + kDown), "\r    \r>");
}

TEST(LineHistory, WalksThroughTheFreeSlotsBackToTheOldestLine)
{
    // Past the slot after the newest line, in which Up stays, Down finds slots that were never filled.
    const std::string pastFreeSlot = "a\rb\r" + kDown + kDown + kEnter + kUp + kDown;
    const std::string toLastSlot = pastFreeSlot + repeated(kDown, kHistorySize - 1 - 4);
    EXPECT_THAT(recalled(toLastSlot, {kDown, kDown}), ElementsAre("a", "b"));
    EXPECT_THAT(recalled(toLastSlot.substr(0, toLastSlot.size() - kDown.size()), {kDown, kDown}), ElementsAre("", "a"));
}

TEST(LineHistory, StaysAtTheLastSlotWhenTurningDownBeforeTheRingHasWrapped)
{
    const std::string newest = "l" + std::to_string(kHistorySize - 1) + ".";
    const std::string atLastSlot = numberedLines(1, kHistorySize - 1) + kDown + kDown + kEnter + kUp;
    EXPECT_THAT(recalled(atLastSlot, {kDown, kUp}), ElementsAre("", newest));
}

TEST(LineHistory, GoesBeforeTheOldestLineWhenTurningUpBeforeTheRingHasWrapped)
{
    // A line end forgets the direction, so that Down shows the selected line, the oldest one, and Up turns there.
    const std::string atOldest = "a\rb\r" + kUp + kUp + kEnter;
    EXPECT_THAT(recalled(atOldest, {kDown, kUp, kUp, kDown}), ElementsAre("a", "", "", "a"));
}

TEST(LineHistory, StoresARepeatedLineOnceWithNothingSelected)
{
    const std::string beforeOldest = "a\rb\r" + kUp + kUp + kUp;
    EXPECT_THAT(recalled(beforeOldest + "b\r", {kUp, kDown, kDown, kDown}), ElementsAre("", "a", "b", ""));
    EXPECT_THAT(recalled(beforeOldest + "a\r", {kUp, kUp, kUp}), ElementsAre("a", "b", "a"));
}

TEST(LineHistory, HoldsTheLatestLines)
{
    std::vector<std::string> expected;
    for (int i = kHistorySize; i >= 1; --i) {
        expected.push_back("l" + std::to_string(i) + ".");
    }
    // The oldest line is in the slot that is filled next; one Up stays there before the ring begins again.
    expected.push_back("l1.");
    expected.push_back("l" + std::to_string(kHistorySize) + ".");

    const Session session = play(numberedLines(1, kHistorySize) + repeated(kUp, expected.size()));
    ASSERT_FALSE(session.empty());
    const std::string shown = session.back().output();
    std::vector<std::string> lines;
    for (std::size_t at = shown.find("\r>"); at != std::string::npos; at = shown.find("\r>", at + 1)) {
        lines.push_back(shown.substr(at + 2, shown.find('\r', at + 1) - at - 2));
    }
    EXPECT_EQ(lines, expected);
}

// 130 lines: the slots 0 and 1 hold the two newest ones, l129 and l130; slot 2 is the next free one and the oldest.
const std::string kWrapped = numberedLines(1, kHistorySize + 2);

TEST(LineHistory, ShowsAnEmptyLineWhenMovingUpAcrossTheFirstSlot)
{
    EXPECT_THAT(recalled(kWrapped, {kUp, kUp, kUp, kUp, kUp}), ElementsAre("l130.", "l129.", "", "l128.", "l127."));
}

TEST(LineHistory, OverwritesTheOldestLines)
{
    // The oldest line stays for one Up, then the ring begins again.
    const std::string nearOldest = kWrapped + repeated(kUp, 3 + kHistorySize - 4);
    EXPECT_THAT(recalled(nearOldest, {kUp, kUp, kUp, kUp, kUp}), ElementsAre("l4.", "l3.", "l3.", "l130.", "l129."));
}

TEST(LineHistory, MovesDownFromTheNewestLineToTheOldest)
{
    EXPECT_THAT(recalled(kWrapped, {kDown, kDown, kDown, kDown, kDown}), ElementsAre("l130.", "l3.", "", "l4.", "l5."));
}

TEST(LineHistory, MovesDownAcrossTheLastSlot)
{
    EXPECT_THAT(recalled(kWrapped + repeated(kUp, 5), {kDown, kDown, kDown, kDown}),
                ElementsAre("l128.", "l129.", "l130.", "l3."));
}

TEST(LineHistory, TurnsDownAtTheLastSlot)
{
    EXPECT_THAT(recalled(kWrapped + repeated(kUp, 4), {kDown, kDown}), ElementsAre("l129.", "l130."));
}

TEST(LineHistory, TurnsUpAtTheFirstSlot)
{
    EXPECT_THAT(recalled(kWrapped + repeated(kUp, 4) + kDown, {kUp, kUp}), ElementsAre("l128.", "l127."));
}

TEST(LineHistory, EmptiesTheLineAtTheFreeSlotWhenMovingDown)
{
    EXPECT_EQ(printedByLast(kWrapped + kDown + kDown + "xyz" + kDown), "\r" + blanks(3 + 3 + 1) + "\r>");
}

TEST(LineHistory, WrapsAgainAndAgain)
{
    EXPECT_THAT(recalled(numberedLines(1, 3 * kHistorySize + 7), {kUp, kUp, kUp}),
                ElementsAre("l391.", "l390.", "l389."));
}

}  // namespace
