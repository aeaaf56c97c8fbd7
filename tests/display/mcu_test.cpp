// The mailbox of the board's microcontroller: every register access of every request, in order.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "console_support.h"
#include "display_support.h"
#include "tovira_parse/handlers.h"

namespace console_test
{
namespace
{

using recording_vek::registers;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using Accesses = std::vector<std::string>;

constexpr std::uint32_t kRunningSignature = 0xdeadbeef;
constexpr std::uint32_t kCompletion = 0x55aa55aa;
const std::string kNothing = "Nothing is get\n";

std::string access(const char* function, std::uint32_t offset)
{
    return std::string("vekReg") + function + "(0x" + hexDigits(offset) + ")";
}

std::string access(const char* function, std::uint32_t offset, std::uint32_t value)
{
    return std::string("vekReg") + function + "(0x" + hexDigits(offset) + ", 0x" + hexDigits(value) + ")";
}

std::string readByte(std::uint32_t offset)
{
    return access("ReadByte", offset);
}

std::string readLong(std::uint32_t offset)
{
    return access("ReadLong", offset);
}

std::string writeByte(std::uint32_t offset, std::uint32_t value)
{
    return access("WriteByte", offset, value);
}

std::string writeLong(std::uint32_t offset, std::uint32_t value)
{
    return access("WriteLong", offset, value);
}

const std::string kRelease = writeLong(0x3ff1c, 0);
const std::string kReadStatus = readByte(0x3ff12);

Accesses operator+(Accesses left, const Accesses& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/** The pulse of the reset that comes in a header when the firmware's signature is missing. */
Accesses resetPulse()
{
    return {writeLong(0x308068, 0xffffff00), writeLong(0x308068, 0xffffff08), "wait(1000000)"};
}

/** What every request begins with while the firmware runs. */
Accesses header(std::uint32_t command, std::uint32_t address, std::uint32_t length)
{
    return {readLong(0x3ff00), writeByte(0x3ff11, command), writeLong(0x3ff14, address), writeByte(0x3ff10, length),
            writeByte(0x3ff20, 0x32)};
}

/** The doorbell, and as many looks at the completion word. */
Accesses ring(int polls = 1)
{
    return Accesses{writeByte(0x3ff13, 0xaa)} + Accesses(static_cast<std::size_t>(polls), readLong(0x3ff1c));
}

/** Where a byte of the data lies. */
std::uint32_t dataOffset(std::size_t index)
{
    return static_cast<std::uint32_t>(index < 0x80 ? 0x3ff80 + index : 0x3ff00 + (index - 0x80));
}

Accesses dataReads(std::size_t count)
{
    Accesses all;
    for (std::size_t i = 0; i < count; ++i) {
        all.push_back(readByte(dataOffset(i)));
    }
    return all;
}

Accesses dataWrites(const std::vector<int>& values)
{
    Accesses all;
    for (std::size_t i = 0; i < values.size(); ++i) {
        all.push_back(writeByte(dataOffset(i), static_cast<std::uint32_t>(values[i])));
    }
    return all;
}

/** The listing of bytes, with the line end behind it. */
std::string listing(const std::string& label, const std::vector<int>& values)
{
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        text.append(i % 16 == 0 ? "\n" + label + ": 0x" : " 0x")
            .append(hexDigits(static_cast<std::uint32_t>(values[i])));
    }
    return text + "\n";
}

/** Bytes, none of which is like its neighbours, that begin with one of a single digit. */
std::vector<int> somePattern(std::size_t count)
{
    std::vector<int> values;
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(static_cast<int>((i * 0x25 + 5) & 0xff));
    }
    return values;
}

/** What the firmware leaves in the mailbox when a request is done. */
struct Answer {
    int status = 0;
    std::vector<int> data{};
    int caught = 0;
    int checksumVerdict = 0;
};

/** Has a firmware answer the requests of the test. */
class McuTest : public ConsoleTest
{
protected:
    McuTest()
    {
        registers().poke<std::uint32_t>(0x3ff00, kRunningSignature);
        answerWith({});
    }

    /** The firmware answers at so many looks at the completion word; other values stand there meanwhile. */
    void answerWith(Answer answer, int polls = 1)
    {
        recording_vek::setOnCall([answer = std::move(answer), polls, looks = 0](const std::string& line) mutable {
            // Each of them differs from the completion word.
            constexpr std::uint32_t kOthers[] = {0, 0x55aa55ab, 0xd5aa55aa, 0x55aa, 0xaa55aa55, 0x55aa0000, 0xffffffff};
            if (line == writeByte(0x3ff13, 0xaa)) {
                looks = 0;
            } else if (line == readLong(0x3ff1c) && ++looks == polls) {
                post(answer);
            } else if (line == readLong(0x3ff1c) && looks < polls) {
                registers().poke(0x3ff1c, kOthers[static_cast<std::size_t>(looks) % std::size(kOthers)]);
            }
        });
    }

    /** The firmware answers at once, but brings the data when they are asked for: the data of long transfers lie over
       the registers. */
    static void answerLateWith(const std::vector<int>& data)
    {
        recording_vek::setOnCall([data](const std::string& line) {
            if (line == readLong(0x3ff1c)) {
                post({.caught = static_cast<int>(data.size())});
            } else if (line == readByte(dataOffset(0))) {
                store(data);
            }
        });
    }

    /** The firmware answers nothing any more. */
    static void fallSilent() { recording_vek::setOnCall(nullptr); }

    static std::uint32_t completionWord() { return registers().peek<std::uint32_t>(0x3ff1c); }

private:
    static void store(const std::vector<int>& data)
    {
        for (std::size_t i = 0; i < data.size(); ++i) {
            registers().poke(dataOffset(i), static_cast<std::uint8_t>(data[i]));
        }
    }

    static void post(const Answer& answer)
    {
        store(answer.data);
        registers().poke(0x3ff12, static_cast<std::uint8_t>(answer.status));
        registers().poke(0x3ff18, static_cast<std::uint8_t>(answer.caught));
        registers().poke(0x3ff21, static_cast<std::uint8_t>(answer.checksumVerdict));
        registers().poke(0x3ff1c, kCompletion);
    }
};

// ---- Every operation

/** One request with its accesses, once with the firmware's answer at the first look at the completion word. */
struct Request {
    std::string name;
    std::string words;     /**< behind the command word */
    Accesses afterHeader;  /**< between the header and the doorbell */
    Accesses afterRing;    /**< behind the completion */
    std::uint32_t command; /**< of the header */
    std::uint32_t address; /**< of the header */
    std::uint32_t length;  /**< of the header */
    Answer answer;         /**< the firmware's */
    std::string output;    /**< what is printed */
};

void PrintTo(const Request& request, std::ostream* stream)
{
    *stream << request.words;
}

std::vector<Request> allRequests()
{
    const Answer three{.status = 0xf7, .data = {0xab, 0x5, 0x0}, .caught = 3, .checksumVerdict = 1};
    return {
        {"AuxRead",
         "aux r 12345678",
         {writeByte(0x3ff19, 1)},
         {readByte(0x3ff80), kRelease, kReadStatus},
         9,
         0x12345678,
         0,
         three,
         "12345678: ab\n"},
        {"AuxBlockRead",
         "aux rs 202 5",
         {writeByte(0x3ff19, 6)},
         Accesses{kReadStatus, readByte(0x3ff18)} + dataReads(3) + Accesses{kRelease},
         9,
         0x202,
         5,
         three,
         "Catch data num: 3\n\ndata: 0xab 0x5 0x0\n"},
        {"AuxWrite",
         "aux w 12345678 1c7",
         {writeByte(0x3ff80, 0xc7)},
         {readByte(0x3ff80), kRelease},
         8,
         0x12345678,
         0,
         three,
         "aux write [12345678] with ab done\n"},
        {"AuxBlockWrite",
         "aux ws 100 1 11 22",
         {writeByte(0x3ff19, 2), writeByte(0x3ff80, 0x11), writeByte(0x3ff81, 0x22)},
         {kReadStatus, kRelease},
         8,
         0x100,
         1,
         three,
         "\ndata: 0x11 0x22\n"},
        {"I2cRead",
         "i2c r 3fe",
         {writeByte(0x3ff19, 1), writeByte(0x3ff1a, 0xfe)},
         {readByte(0x3ff80), kRelease},
         1,
         0x50,
         0,
         three,
         "000003fe: ab\n"},
        {"I2cBlockRead",
         "i2c rs 1fe 2",
         {writeByte(0x3ff19, 3), writeByte(0x3ff1a, 0xfe)},
         Accesses{kReadStatus} + dataReads(3) + Accesses{readByte(0x3ff21), kRelease},
         1,
         0x50,
         0,
         Answer{.status = 0xef, .data = {0xab, 0x5, 0x0}, .caught = 7, .checksumVerdict = 1},
         "\nL: 0xab 0x5 0x0\nchecksum correct\n"},
        {"I2cWrite",
         "i2c w 12345678 1c7",
         {writeByte(0x3ff80, 0xc7)},
         {readByte(0x3ff80), kRelease},
         8,
         0x12345678,
         0,
         three,
         "aux i2c write [12345678] with ab done\n"},
    };
}

class McuRequestTest : public McuTest, public ::testing::WithParamInterface<Request>
{
protected:
    static Accesses headerOf(const Request& request)
    {
        return header(request.command, request.address, request.length);
    }

    static Accesses accesses(int polls = 1)
    {
        const Request& request = GetParam();
        return headerOf(request) + request.afterHeader + ring(polls) + request.afterRing;
    }

    static Accesses accessesWithReset()
    {
        Accesses all = accesses();
        const Accesses pulse = resetPulse();
        all.insert(all.begin() + 1, pulse.begin(), pulse.end());
        return all;
    }

    static std::string text() { return "mcu " + GetParam().words; }
    static Outcome expected() { return {0, GetParam().output}; }
};

TEST_P(McuRequestTest, AccessesTheMailboxInOrder)
{
    answerWith(GetParam().answer);
    EXPECT_EQ(call(doMcu, text()), expected());
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses()));
    EXPECT_EQ(completionWord(), 0U) << "released";
}

TEST_P(McuRequestTest, PollsUntilTheCompletionWordComes)
{
    for (const int polls : {2, 3, 8, 1000}) {
        answerWith(GetParam().answer, polls);
        EXPECT_EQ(call(doMcu, text()), expected()) << polls;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses(polls))) << polls;
    }
}

TEST_P(McuRequestTest, ResetsAMicrocontrollerWithoutSignature)
{
    answerWith(GetParam().answer);
    for (const std::uint32_t signature : {0x0U, 0xdeadbeeeU, 0x5eadbeefU, 0xbeefU, 0xefbeaddeU, 0xffffffffU}) {
        registers().poke(0x3ff00, signature);
        EXPECT_EQ(call(doMcu, text()), expected()) << signature;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accessesWithReset())) << signature;
    }
    registers().poke(0x3ff00, kRunningSignature);
    EXPECT_EQ(call(doMcu, text()), expected());
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses())) << "once the signature is there, no more";
}

TEST_P(McuRequestTest, LooksAtNoResult)
{
    answerWith(GetParam().answer);
    for (const char* function : {"vekRegReadByte", "vekRegReadLong", "vekRegWriteByte", "vekRegWriteLong"}) {
        recording_vek::setResult(function, 5);
    }
    EXPECT_EQ(call(doMcu, text()), expected());
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses()));
    for (const char* function : {"vekRegWriteByte", "vekRegWriteLong"}) {
        recording_vek::setResult(function, -5);
    }
    EXPECT_EQ(call(doMcu, text()), expected());
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses()));
}

TEST_P(McuRequestTest, LooksAtNothingBehindItsArguments)
{
    answerWith(GetParam().answer);
    EXPECT_EQ(call(doMcu, text() + " 77 foo"), expected());
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses()));
}

TEST_P(McuRequestTest, NeedsEveryArgument)
{
    std::string words = text();
    for (std::size_t blank = words.rfind(' '); blank != std::string::npos; blank = words.rfind(' ')) {
        words.erase(blank);
        if (words == "mcu i2c rs") {
            continue;
        }
        EXPECT_EQ(call(doMcu, words), Outcome{-2}) << words;
        EXPECT_EQ(call(doMcu, words + " ,\t"), Outcome{-2}) << words;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_P(McuRequestTest, SplitsAtBlanksCommasAndTabs)
{
    answerWith(GetParam().answer);
    for (const char* delimiter : {",", "\t", " ,\t", ",,"}) {
        std::string words = " \t" + text();
        for (std::size_t blank = words.find(' ', 2); blank != std::string::npos; blank = words.find(' ', blank)) {
            words.replace(blank, 1, delimiter);
            blank += std::string(delimiter).size();
        }
        EXPECT_EQ(call(doMcu, words + delimiter), expected()) << words;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses())) << words;
    }
}

TEST_P(McuRequestTest, KeywordsAreCaseBlind)
{
    answerWith(GetParam().answer);
    std::string upper = text();
    for (std::size_t i = 0; i < upper.rfind(' '); ++i) {
        upper[i] = static_cast<char>(std::toupper(upper[i]));
    }
    EXPECT_EQ(call(doMcu, upper), expected());
    std::string mixed = text();
    mixed[4] = static_cast<char>(std::toupper(mixed[4]));
    EXPECT_EQ(call(doMcu, mixed), expected());
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses() + accesses()));
}

TEST_P(McuRequestTest, LineRunsOverEveryPathAndIsRepeated)
{
    answerWith(GetParam().answer);
    for (const int mode : {0, 1, 2}) {
        recording_vek::setMode(mode);
        EXPECT_EQ(runLine(text()), expected()) << mode;
        EXPECT_EQ(runLine(""), expected()) << mode;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses() + accesses())) << mode;
    }
}

TEST_P(McuRequestTest, IgnoresTheRepeatFlag)
{
    answerWith(GetParam().answer);
    EXPECT_EQ(call(doMcu, text(), 1), expected());
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(accesses()));
}

INSTANTIATE_TEST_SUITE_P(All, McuRequestTest, ::testing::ValuesIn(allRequests()),
                         [](const auto& request) { return request.param.name; });

TEST_F(McuTest, SignatureThatComesWithTheResetIsFoundByTheNextRequest)
{
    registers().poke<std::uint32_t>(0x3ff00, 0);
    recording_vek::setOnCall([](const std::string& line) {
        if (line == writeLong(0x308068, 0xffffff08)) {
            registers().poke(0x3ff00, kRunningSignature);
        }
        registers().poke(0x3ff1c, kCompletion);
    });
    call(doMcu, "mcu i2c r 0");
    call(doMcu, "mcu i2c r 0");
    const Accesses rest =
        Accesses{writeByte(0x3ff19, 1), writeByte(0x3ff1a, 0)} + ring() + Accesses{readByte(0x3ff80), kRelease};
    Accesses first = header(1, 0x50, 0);
    const Accesses pulse = resetPulse();
    first.insert(first.begin() + 1, pulse.begin(), pulse.end());
    EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(first + rest + header(1, 0x50, 0) + rest));
}

// ---- Single transfers

TEST_F(McuTest, AuxReadOfNothing)
{
    for (const int status : {0x08, 0x0c, 0x18, 0xff}) {
        answerWith({.status = status, .data = {0xab}});
        EXPECT_EQ(call(doMcu, "mcu aux r 10"), (Outcome{0, kNothing})) << status;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(header(9, 0x10, 0) + Accesses{writeByte(0x3ff19, 1)} + ring() +
                                                        Accesses{readByte(0x3ff80), kRelease, kReadStatus}));
        EXPECT_EQ(completionWord(), 0U) << "released";
    }
}

TEST_F(McuTest, OnlyBitThreeOfTheStatusMeansNothingToAux)
{
    for (const int status : {0x00, 0x01, 0x02, 0x04, 0x10, 0x20, 0x40, 0x80, 0xf7}) {
        answerWith({.status = status, .data = {0x5}, .caught = 1});
        EXPECT_EQ(call(doMcu, "mcu aux r 10"), (Outcome{0, "00000010: 05\n"})) << status;
        EXPECT_EQ(call(doMcu, "mcu aux rs 10 0"), (Outcome{0, "Catch data num: 1\n\ndata: 0x5\n"})) << status;
        EXPECT_EQ(call(doMcu, "mcu aux ws 10 0 5"), (Outcome{0, "\ndata: 0x5\n"})) << status;
        EXPECT_EQ(completionWord(), 0U) << "released";
    }
}

TEST_F(McuTest, WritesAndI2cReadsLookAtNoStatus)
{
    answerWith({.status = 0xff, .data = {0x5}});
    EXPECT_EQ(call(doMcu, "mcu aux w 10 5"), (Outcome{0, "aux write [10] with 05 done\n"}));
    EXPECT_EQ(call(doMcu, "mcu i2c w 10 5"), (Outcome{0, "aux i2c write [10] with 05 done\n"}));
    EXPECT_EQ(call(doMcu, "mcu i2c r 10"), (Outcome{0, "00000010: 05\n"}));
}

TEST_F(McuTest, AddressesAreHexadecimalAndThirtyTwoBitsWide)
{
    EXPECT_EQ(call(doMcu, "mcu aux r 0xAbCdEf01"), (Outcome{0, "abcdef01: 00\n"}));
    EXPECT_EQ(call(doMcu, "mcu aux r ffffffff"), (Outcome{0, "ffffffff: 00\n"}));
    EXPECT_EQ(call(doMcu, "mcu aux r 123456789"), (Outcome{0, "23456789: 00\n"}));
    EXPECT_EQ(call(doMcu, "mcu aux r zz"), (Outcome{0, "00000000: 00\n"}));
    EXPECT_EQ(call(doMcu, "mcu aux w ffffffff ff"), (Outcome{0, "aux write [ffffffff] with ff done\n"}));
    EXPECT_EQ(call(doMcu, "mcu i2c w 0A zz"), (Outcome{0, "aux i2c write [a] with 00 done\n"}));
    EXPECT_EQ(call(doMcu, "mcu i2c r 987654321"), (Outcome{0, "87654321: 00\n"}));
    std::vector<std::string> written;
    for (const std::string& line : takeDeviceCalls()) {
        if (line.starts_with("vekRegWriteLong(0x3ff14") || line.starts_with("vekRegWriteByte(0x3ff1a")) {
            written.push_back(line);
        }
    }
    EXPECT_THAT(written,
                ElementsAreArray({writeLong(0x3ff14, 0xabcdef01), writeLong(0x3ff14, 0xffffffff),
                                  writeLong(0x3ff14, 0x23456789), writeLong(0x3ff14, 0), writeLong(0x3ff14, 0xffffffff),
                                  writeLong(0x3ff14, 0xa), writeLong(0x3ff14, 0x50), writeByte(0x3ff1a, 0x21)}));
}

// ---- Block reads over AUX

TEST_F(McuTest, AuxBlockReadListsWhatWasCaught)
{
    for (const std::size_t caught : {0U, 1U, 15U, 16U, 17U, 32U, 127U, 128U, 129U, 160U, 255U}) {
        registers().poke(0x3ff00, kRunningSignature);
        const std::vector<int> data = somePattern(caught);
        answerLateWith(data);
        EXPECT_EQ(call(doMcu, "mcu aux rs 7 20"),
                  (Outcome{0, "Catch data num: " + std::to_string(caught) + "\n" + listing("data", data)}));
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(header(9, 7, 0x20) + Accesses{writeByte(0x3ff19, 0x21)} +
                                                        ring() + Accesses{kReadStatus, readByte(0x3ff18)} +
                                                        dataReads(caught) + Accesses{kRelease}));
    }
}

TEST_F(McuTest, AuxBlockReadOfNothingIsNotReleased)
{
    for (const int status : {0x08, 0x18, 0xff}) {
        answerWith({.status = status, .caught = 3});
        EXPECT_EQ(call(doMcu, "mcu aux rs 10 3"), (Outcome{0, kNothing})) << status;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(header(9, 0x10, 3) + Accesses{writeByte(0x3ff19, 4)} + ring() +
                                                        Accesses{kReadStatus}));
        EXPECT_EQ(completionWord(), kCompletion);
    }
    fallSilent();
    registers().poke<std::uint8_t>(0x3ff12, 0);
    EXPECT_EQ(call(doMcu, "mcu aux r 10"), (Outcome{0, "00000010: 00\n"})) << "ends at the word that was left";
    EXPECT_EQ(completionWord(), 0U);
}

TEST_F(McuTest, AuxBlockReadCountsAreCutToEightBits)
{
    const std::vector<std::pair<std::string, std::uint32_t>> counts = {
        {"0", 0}, {"0x7F", 0x7f}, {"80", 0x80}, {"fe", 0xfe}, {"ff", 0xff}, {"100", 0}, {"1ff", 0xff}, {"zz", 0}};
    for (const auto& [typed, length] : counts) {
        EXPECT_EQ(call(doMcu, "mcu aux rs 0 " + typed), (Outcome{0, "Catch data num: 0\n\n"})) << typed;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAreArray(header(9, 0, length) + Accesses{writeByte(0x3ff19, (length + 1) & 0xff)} + ring() +
                                     Accesses{kReadStatus, readByte(0x3ff18), kRelease}))
            << typed;
    }
}

// ---- Block writes over AUX

TEST_F(McuTest, AuxBlockWriteWritesAndListsItsValues)
{
    for (const std::size_t number : {1U, 2U, 15U, 16U, 17U, 32U, 127U, 128U, 129U, 200U, 255U, 256U}) {
        registers().poke(0x3ff00, kRunningSignature);
        const std::vector<int> values = somePattern(number);
        const auto length = static_cast<std::uint32_t>(number - 1);
        std::string text = "mcu aux ws abc " + hexDigits(length);
        for (const int value : values) {
            text += " " + hexDigits(static_cast<std::uint32_t>(value));
        }
        EXPECT_EQ(call(doMcu, text), (Outcome{0, listing("data", values)})) << number;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAreArray(header(8, 0xabc, length) +
                                     Accesses{writeByte(0x3ff19, static_cast<std::uint32_t>(number & 0xff))} +
                                     dataWrites(values) + ring() + Accesses{kReadStatus, kRelease}))
            << number;
        EXPECT_EQ(call(doMcu, text.substr(0, text.rfind(' '))), Outcome{-2}) << number;
        EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    }
}

TEST_F(McuTest, AuxBlockWriteCutsItsValues)
{
    EXPECT_EQ(call(doMcu, "mcu aux ws 0 3 1ff 0x10 zz 12345678a"), (Outcome{0, "\ndata: 0xff 0x10 0x0 0x8a\n"}));
    EXPECT_THAT(takeDeviceCalls(),
                ElementsAreArray(header(8, 0, 3) + Accesses{writeByte(0x3ff19, 4)} +
                                 dataWrites({0xff, 0x10, 0x00, 0x8a}) + ring() + Accesses{kReadStatus, kRelease}));
}

TEST_F(McuTest, AuxBlockWriteOfNothingIsNotReleased)
{
    for (const int status : {0x08, 0x18, 0xff}) {
        answerWith({.status = status});
        EXPECT_EQ(call(doMcu, "mcu aux ws 10 1 a b"), (Outcome{0, "\ndata: 0xa 0xb\n" + kNothing})) << status;
        EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(header(8, 0x10, 1) + Accesses{writeByte(0x3ff19, 2)} +
                                                        dataWrites({0xa, 0xb}) + ring() + Accesses{kReadStatus}));
        EXPECT_EQ(completionWord(), kCompletion);
    }
}

TEST_F(McuTest, AuxBlockWriteOfMoreThanTheDataAreaIsRefused)
{
    std::string values;
    for (int i = 0; i < 0x210; ++i) {
        values += " 1";
    }
    for (const char* count : {"100", "101", "1ff", "200", "7fffffff", "80000000", "ffffffff", "fffffffe"}) {
        EXPECT_EQ(call(doMcu, std::string("mcu aux ws 0 ") + count + values), Outcome{-2}) << count;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

// ---- Block reads over I2C

TEST_F(McuTest, I2cBlockReadListsItsBytes)
{
    for (const std::size_t number : {1U, 2U, 15U, 16U, 17U, 32U, 127U, 128U, 129U, 200U, 255U}) {
        registers().poke(0x3ff00, kRunningSignature);
        const std::vector<int> data = somePattern(number);
        answerLateWith(data);
        const auto count = static_cast<std::uint32_t>(number);
        const Outcome outcome = call(doMcu, "mcu i2c rs 12 " + hexDigits(count - 1));
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.output, ::testing::StartsWith(listing("L", data) + "checksum ")) << number;
        Accesses reads = dataReads(number);
        EXPECT_THAT(
            takeDeviceCalls(),
            ElementsAreArray(header(1, 0x50, 0) + Accesses{writeByte(0x3ff19, count), writeByte(0x3ff1a, 0x12)} +
                             ring() + Accesses{kReadStatus} + reads + Accesses{readByte(0x3ff21), kRelease}))
            << number;
    }
}

TEST_F(McuTest, I2cBlockReadWithoutArgumentsTakesOneHundredAndTwentyEightBytes)
{
    const std::vector<int> data = somePattern(0x80);
    answerWith({.data = data, .checksumVerdict = 1});
    for (const char* text : {"mcu i2c rs", "mcu i2c rs ,\t"}) {
        EXPECT_EQ(call(doMcu, text), (Outcome{0, listing("L", data) + "checksum correct\n"}));
        EXPECT_THAT(
            takeDeviceCalls(),
            ElementsAreArray(header(1, 0x50, 0) + Accesses{writeByte(0x3ff19, 0x80), writeByte(0x3ff1a, 0)} + ring() +
                             Accesses{kReadStatus} + dataReads(0x80) + Accesses{readByte(0x3ff21), kRelease}));
    }
    call(doMcu, "mcu i2c rs 0 80");
    EXPECT_THAT(
        takeDeviceCalls(),
        ElementsAreArray(header(1, 0x50, 0) + Accesses{writeByte(0x3ff19, 0x81), writeByte(0x3ff1a, 0)} + ring() +
                         Accesses{kReadStatus} + dataReads(0x81) + Accesses{readByte(0x3ff21), kRelease}));
}

TEST_F(McuTest, I2cBlockReadCountsWrapToNoBytes)
{
    answerWith({.checksumVerdict = 1});
    for (const char* count : {"ff", "0x1FF", "ffffffff"}) {
        EXPECT_EQ(call(doMcu, std::string("mcu i2c rs 0 ") + count), (Outcome{0, "\nchecksum correct\n"})) << count;
        EXPECT_THAT(takeDeviceCalls(),
                    ElementsAreArray(header(1, 0x50, 0) + Accesses{writeByte(0x3ff19, 0), writeByte(0x3ff1a, 0)} +
                                     ring() + Accesses{kReadStatus, readByte(0x3ff21), kRelease}));
    }
    EXPECT_EQ(call(doMcu, "mcu i2c rs 0 100"), (Outcome{0, "\nL: 0x0\nchecksum correct\n"}));
}

TEST_F(McuTest, I2cBlockReadTellsTheVerdictOnTheChecksum)
{
    for (const int verdict : {0x01, 0x02, 0x80, 0xff}) {
        answerWith({.data = {7}, .checksumVerdict = verdict});
        EXPECT_EQ(call(doMcu, "mcu i2c rs 0 0"), (Outcome{0, "\nL: 0x7\nchecksum correct\n"})) << verdict;
    }
    answerWith({.data = {7}, .checksumVerdict = 0});
    EXPECT_EQ(call(doMcu, "mcu i2c rs 0 0"), (Outcome{0, "\nL: 0x7\nchecksum error\n"}));
    EXPECT_EQ(completionWord(), 0U) << "released";
}

TEST_F(McuTest, I2cBlockReadOfNothingIsNotReleased)
{
    for (const int status : {0x10, 0x18, 0xff}) {
        answerWith({.status = status, .checksumVerdict = 1});
        for (const char* text : {"mcu i2c rs", "mcu i2c rs 0 7f"}) {
            EXPECT_EQ(call(doMcu, text), (Outcome{0, kNothing})) << status;
            EXPECT_THAT(takeDeviceCalls(), ElementsAreArray(header(1, 0x50, 0) +
                                                            Accesses{writeByte(0x3ff19, 0x80), writeByte(0x3ff1a, 0)} +
                                                            ring() + Accesses{kReadStatus}));
            EXPECT_EQ(completionWord(), kCompletion);
        }
    }
}

TEST_F(McuTest, OnlyBitFourOfTheStatusMeansNothingToI2c)
{
    for (const int status : {0x00, 0x01, 0x02, 0x04, 0x08, 0x20, 0x40, 0x80, 0xef}) {
        answerWith({.status = status, .data = {7}});
        EXPECT_EQ(call(doMcu, "mcu i2c rs 0 0"), (Outcome{0, "\nL: 0x7\nchecksum error\n"})) << status;
    }
}

TEST_F(McuTest, I2cBlockReadNeedsACountWithAnAddress)
{
    for (const char* text : {"mcu i2c rs 0", "mcu i2c rs 50 ,\t"}) {
        EXPECT_EQ(call(doMcu, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

// ---- Words

TEST_F(McuTest, ChannelAndOperationAreNeeded)
{
    for (const char* text : {"", "mcu", "mcu ", "mcu ,\t", "mcu aux", "mcu aux ,\t", "mcu i2c", "mcu i2c ,"}) {
        EXPECT_EQ(call(doMcu, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(McuTest, OtherChannelsDoNothing)
{
    for (const char* text : {"mcu foo", "mcu foo r 0", "mcu au r 0", "mcu auxx r 0", "mcu i2 r 0", "mcu i2cc r 0",
                             "mcu r 0", "mcu aux\n r 0", "mcu mcu aux r 0", "mcu \raux r 0"}) {
        EXPECT_EQ(call(doMcu, text), Outcome{}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
}

TEST_F(McuTest, OtherOperationsAreRefused)
{
    for (const char* text : {"mcu aux x", "mcu aux x 1 2 3", "mcu aux rr 0", "mcu aux rss 0 1", "mcu aux ww 0 1",
                             "mcu aux wss 0 0 1", "mcu aux s 0 1", "mcu aux r\n 0", "mcu i2c x", "mcu i2c ws 0 0 1",
                             "mcu i2c rss 0 1", "mcu i2c rr 0", "mcu i2c ww 0 1", "mcu i2c 0 1"}) {
        EXPECT_EQ(call(doMcu, text), Outcome{-2}) << text;
    }
    EXPECT_THAT(takeDeviceCalls(), IsEmpty());
    EXPECT_EQ(runLine("mcu aux x"), (Outcome{-2, std::string(kBadArgumentLine)}));
}

TEST_F(McuTest, TurnsOnlyTheKeywordsIntoUpperCase)
{
    std::string text = "mcu aux a`b{z\xe4 cd";
    EXPECT_EQ(doMcu(text.data(), 0), -2);
    EXPECT_EQ(text.substr(0, 3), "mcu");
    EXPECT_EQ(text.substr(4, 3), "AUX");
    EXPECT_EQ(text.substr(8, 6), "A`B{Z\xe4");
    EXPECT_EQ(text.substr(15), "cd");

    std::string channel = "mcu i`2c{\xe4 rs ab";
    EXPECT_EQ(doMcu(channel.data(), 0), 0);
    EXPECT_EQ(channel.substr(4, 6), "I`2C{\xe4");
}

TEST_F(McuTest, LineEndsSplitOffTheCommandWordOnly)
{
    for (const char* text : {"mcu\raux r 10", "mcu\naux r 10", "\r\nmcu aux r 10\r\n"}) {
        EXPECT_EQ(call(doMcu, text), (Outcome{0, "00000010: 00\n"})) << text;
    }
    EXPECT_EQ(call(doMcu, "mcu\r\naux r 10"), Outcome{}) << "the channel is \"\\naux\"";
    EXPECT_EQ(call(doMcu, "mcu aux r \n10"), (Outcome{0, "00000000: 00\n"}));
}

}  // namespace
}  // namespace console_test
