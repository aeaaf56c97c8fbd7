// Transactions over a line that loses, repeats, changes, delays and invents bytes: what comes back is right or an
// error, and nothing is done twice.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>

#include "memory_line.h"
#include "serial/remote_buses.h"
#include "serial/remote_space.h"
#include "serial/serial_link.h"

namespace serial_test
{
namespace
{

/** How many transactions to make of each kind of noise: the whole number takes too long for every day. */
std::uint64_t transactions()
{
    constexpr std::uint64_t kEveryDay = 10'000;
    const char* const wanted = std::getenv("SERIAL_TEST_TRANSACTIONS");
    return wanted == nullptr ? kEveryDay : std::strtoull(wanted, nullptr, 10);
}

/** What the board's memory holds at an address. */
std::uint64_t contentOf(std::uint64_t address, unsigned width)
{
    const std::uint64_t mixed = (address + 1) * 0x9e37'79b9'7f4a'7c15U;
    return width == 8 ? mixed : mixed & ((std::uint64_t{1} << (8 * width)) - 1);
}

/** Counts how often each of its addresses is accessed. A write must bring the content of its address. */
class CountingSpace final : public vek::AddressSpace
{
public:
    vek::ReadResult read(std::uint64_t address, unsigned width) override
    {
        ++accesses[address];
        return {VEK_OK, contentOf(address, width)};
    }

    int write(std::uint64_t address, unsigned width, std::uint64_t value) override
    {
        ++accesses[address];
        wrongWrites += value == contentOf(address, width) ? 0U : 1U;
        return VEK_OK;
    }

    int accessesOf(std::uint64_t address) const
    {
        const auto found = accesses.find(address);
        return found == accesses.end() ? 0 : found->second;
    }

    std::unordered_map<std::uint64_t, int> accesses;
    std::uint64_t wrongWrites = 0;
};

/** Counts the transfers, each of which has a number. */
class CountingSpi final : public vek::SpiBus
{
public:
    void select() override {}
    void deselect() override {}
    int read(std::span<std::uint8_t> /*bytes*/) override { return VEK_OK; }
    int write(std::span<const std::uint8_t> bytes) override
    {
        vek::MessageReader reader(bytes);
        ++transfers[reader.take32()];
        return VEK_OK;
    }

    std::unordered_map<std::uint64_t, int> transfers;
};

struct Noise {
    const char* name;
    Faults faults;
};

void PrintTo(const Noise& noise, std::ostream* stream)
{
    *stream << noise.name;
}

class NoisyLine : public testing::TestWithParam<Noise>
{
protected:
    NoisyLine()
    {
        card_.amba = &memory_;
        card_.spi = &spi_;
        EXPECT_EQ(session_.begin(line_, 115200, 0x1234'5678), VEK_OK);
        link_.use(session_);
    }

    /** One transaction of some kind; its number is also the address of what it does. */
    void transact(std::uint64_t number)
    {
        const std::uint64_t address = number * 64;
        const unsigned width = 1U << number % 4;
        switch (number / 4 % 4) {
            case 0: {
                const auto [result, value] = space_.read(address, width);
                wrong_ += result == VEK_OK && value != contentOf(address, width) ? 1U : 0U;
                return note(result, memory_.accessesOf(address));
            }
            case 1: {
                const int result = space_.write(address, width, contentOf(address, width));
                return note(result, memory_.accessesOf(address));
            }
            case 2: {
                std::array<std::uint32_t, 4> longs{};
                const int result = space_.readLongs(address, longs.data(), longs.size());
                for (std::size_t i = 0; i < longs.size() && result == VEK_OK; ++i) {
                    wrong_ += longs[i] == contentOf(address + 4 * i, 4) ? 0U : 1U;
                }
                return note(result, memory_.accessesOf(address));
            }
            default: {
                vek::MessageWriter id(0, 0, 0);
                id.cutTo(0);
                id.put32(static_cast<std::uint32_t>(number));
                const int result = bus_.write(id.bytes());
                return note(result, spi_.transfers[number]);
            }
        }
    }

    void note(int result, int executions)
    {
        right_ += result == VEK_OK ? 1U : 0U;
        reported_ += result < 0 ? 1U : 0U;
        twice_ += executions > 1 ? 1U : 0U;
        // What the board is said to have done, it has done.
        wrong_ += result == VEK_OK && executions != 1 ? 1U : 0U;
    }

    vek::AccessPath card_ = emptyPath();
    CountingSpace memory_;
    CountingSpi spi_;
    Board board_{card_};
    MemoryLine line_{board_.line(), GetParam().faults, 42};
    vek::SerialSession session_;
    vek::SerialLink link_;
    vek::RemoteSpace space_{link_, 0};
    vek::RemoteSpiBus bus_{link_};
    std::uint64_t right_ = 0;
    std::uint64_t reported_ = 0;
    std::uint64_t wrong_ = 0;
    std::uint64_t twice_ = 0;
};

TEST_P(NoisyLine, GivesTheRightValueOrAnErrorAndDoesNothingTwice)
{
    const std::uint64_t count = transactions();
    for (std::uint64_t number = 0; number < count; ++number) {
        transact(number);
    }
    // Requests that came late, after the host had given them up.
    for (const auto& [address, times] : memory_.accesses) {
        twice_ += times > 1 ? 1U : 0U;
    }
    for (const auto& [number, times] : spi_.transfers) {
        twice_ += times > 1 ? 1U : 0U;
    }
    wrong_ += memory_.wrongWrites;
    std::printf("| %-34s | %6lu | %6lu | %5lu | %5lu | %5lu | %6lu |\n", GetParam().name, count, right_, reported_,
                wrong_, twice_, link_.repeats());
    EXPECT_EQ(right_ + reported_, count);
    EXPECT_EQ(wrong_, 0U);
    EXPECT_EQ(twice_, 0U);
    EXPECT_LT(reported_, count / 50);
    EXPECT_GT(link_.repeats(), count / 10) << "there was no noise to speak of";
}

INSTANTIATE_TEST_SUITE_P(
    OnePerCentOfTheBytes, NoisyLine,
    testing::Values(Noise{"dropped", {.drop = 0.01}}, Noise{"doubled", {.repeat = 0.01}},
                    Noise{"a bit flipped", {.flip = 0.01}}, Noise{"delayed up to 0.6 s", {.delay = 0.01}},
                    Noise{"a byte inserted", {.insert = 0.01}},
                    Noise{"all of them, 0.2 % each",
                          {.drop = 0.002, .repeat = 0.002, .flip = 0.002, .delay = 0.002, .insert = 0.002}}));

}  // namespace
}  // namespace serial_test
