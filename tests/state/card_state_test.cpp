// The state of a card, put together by hand with a clock of the tests' own: nothing of it is forgotten, none that is
// damaged does harm, and those who share a card see each other's work.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <ostream>
#include <random>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "card/builtin_cards.h"
#include "card/kernel_memory.h"
#include "card/simulated_card.h"
#include "drivers/driver_core.h"
#include "forked_test.h"
#include "path/path_to_card.h"
#include "scratch_folder.h"
#include "state/card_keeper.h"
#include "state/kept_path.h"
#include "state/snapshot.h"
#include "state/state_visitor.h"

namespace
{

/** What the host's clock shows while a test sets it, in nanoseconds; 0 otherwise. */
std::uint64_t hostTime = 0;

constexpr std::uint64_t kSecond = 1'000'000'000;

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept
{
    if (hostTime == 0 || clock != CLOCK_MONOTONIC) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    }
    now->tv_sec = static_cast<time_t>(hostTime / kSecond);
    now->tv_nsec = static_cast<long>(hostTime % kSecond);
    return 0;
}

namespace vek
{
namespace
{

using Random = std::mt19937_64;
using Bytes = std::vector<std::uint8_t>;

/** A card with its driver and the path to them. */
struct Card {
    explicit Card(const CardFacts& facts)
        : card(facts),
          driver(kDriverVersion, facts.chip.videoMemorySize),
          path(pathTo(0, facts.chip, card, driver, kernelMemory))
    {
    }

    KernelMemory kernelMemory;
    SimulatedCard card;
    DriverCore driver;
    AccessPath path;

    Bytes state()
    {
        StateVisitor measure;
        measure(card, driver);
        Bytes image(measure.size());
        StateVisitor out = StateVisitor::copyingTo(image);
        out(card, driver);
        EXPECT_TRUE(out.sound());
        return image;
    }

    bool setState(const Bytes& image)
    {
        StateVisitor in = StateVisitor::copyingFrom(image);
        in(card, driver);
        return in.sound();
    }
};

/** Host memory for the memories of a card, as files would be. */
class Pages
{
public:
    Pages() = default;
    ~Pages()
    {
        for (const auto& page : pages_) {
            munmap(page.data(), page.size());
        }
    }
    Pages(const Pages&) = delete;
    Pages& operator=(const Pages&) = delete;

    template <typename Memory>
    void operator()(const char* /*name*/, Memory& memory)
    {
        void* base =
            mmap(nullptr, memory.size(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        ASSERT_NE(base, MAP_FAILED);
        pages_.emplace_back(static_cast<unsigned char*>(base), memory.size());
        memory.adopt(pages_.back().data());
    }

    /** Of the small ones, of which all that the tests touch is copied. */
    void copyTo(const Pages& other) const
    {
        for (std::size_t each = 0; each < pages_.size(); ++each) {
            constexpr std::size_t kSmall = 0x200'0000;
            if (pages_[each].size() <= kSmall) {
                std::memcpy(other.pages_[each].data(), pages_[each].data(), pages_[each].size());
            }
        }
    }

private:
    std::vector<std::span<unsigned char>> pages_;
};

/** Time is for the tests to let pass. */
class NoPause final : public Pause
{
public:
    void microseconds(std::uint32_t /*duration*/) override {}
};

/** Does things at random to all of a card, and notes everything that comes back. */
class Stirrer
{
public:
    Stirrer(Card& card, std::uint64_t seed) : card_(card), random_(seed)
    {
        const AccessPath& path = card.path;
        for (AddressSpace* space : {path.crtc, path.pciConfiguration, path.sensors, path.clocks, path.power,
                                    path.features, path.information, path.axiMonitor, path.vgaDac, path.edpBacklight}) {
            addSpace(space);
        }
        addAll(path.hdmiPhys);
        addAll(path.gammaTables);
        addAll(path.dpPhys);
        addAll(path.dpControllers);
        for (const auto& row : {path.i2c, path.ddc}) {
            for (I2cBus* bus : row) {
                if (bus != nullptr) {
                    buses_.push_back(bus);
                }
            }
        }
    }

    Bytes stir(int steps)
    {
        for (int step = 0; step < steps; ++step) {
            hostTime += oneOf<std::uint64_t>({1, 1'000, 100'000, 30'000'000, 3 * kSecond});
            switch (below(8)) {
                case 0:
                case 1:
                    accessWindow();
                    break;
                case 2:
                case 3:
                    access(*spaces_[below(spaces_.size())], below(0x200));
                    break;
                case 4:
                    useI2c(*buses_[below(buses_.size())]);
                    break;
                case 5:
                    useSpi(*card_.path.spi);
                    break;
                case 6:
                    useAux(*card_.path.dpAux[below(card_.path.dpAux[1] == nullptr ? 1 : 2)]);
                    break;
                default:
                    useDriver();
                    break;
            }
        }
        return std::move(noted_);
    }

private:
    std::uint64_t below(std::uint64_t end) { return random_() % end; }

    template <typename Value>
    Value oneOf(std::initializer_list<Value> values)
    {
        return values.begin()[below(values.size())];
    }

    void addSpace(AddressSpace* space)
    {
        if (space != nullptr) {
            spaces_.push_back(space);
        }
    }

    template <std::size_t Most>
    void addAll(const Channels<AddressSpace, Most>& row)
    {
        for (AddressSpace* space : row) {
            addSpace(space);
        }
    }

    void note(std::uint64_t value)
    {
        noted_.insert(noted_.end(), {std::uint8_t(value), std::uint8_t(value >> 8), std::uint8_t(value >> 16),
                                     std::uint8_t(value >> 24)});
    }

    std::uint64_t anyValue()
    {
        return oneOf<std::uint64_t>({below(16), below(256), random_(), 1, 2, 4, 8, 0x14, 0xaa, 0});
    }

    void accessWindow()
    {
        const auto& windows = card_.card.registerWindows;
        const AddressWindow& window = windows[below(windows.size())];
        access(*card_.path.registers, window.base + below(window.length));
    }

    void access(AddressSpace& space, std::uint64_t address)
    {
        const unsigned width = oneOf({1U, 2U, 4U, 4U, 8U});
        address -= below(4) == 0 ? 0 : address % width;
        if (below(2) == 0) {
            const auto [result, value] = space.read(address, width);
            note(static_cast<std::uint64_t>(result));
            note(value);
        } else {
            note(static_cast<std::uint64_t>(space.write(address, width, anyValue())));
        }
    }

    void useI2c(I2cBus& bus)
    {
        constexpr std::array<unsigned, 9> kDevices{0x24, 0x25, 0x30, 0x40, 0x48, 0x4c, 0x50, 0x50, 0x11};
        note(static_cast<std::uint64_t>(bus.start()));
        const unsigned reads = below(2) == 0 ? 1 : 0;
        note(static_cast<std::uint64_t>(
            bus.write(static_cast<std::uint8_t>(kDevices[below(kDevices.size())] << 1 | reads))));
        for (std::uint64_t byte = below(5); byte > 0; --byte) {
            if (reads == 0) {
                note(static_cast<std::uint64_t>(bus.write(static_cast<std::uint8_t>(anyValue()))));
            } else {
                note(bus.read(byte > 1).value);
            }
        }
        if (below(4) != 0) {
            bus.stop();
        }
    }

    void useSpi(SpiBus& bus)
    {
        constexpr std::array<std::uint8_t, 14> kOpcodes{0x06, 0x06, 0x06, 0x04, 0x01, 0x05, 0x02,
                                                        0x03, 0x0b, 0x9f, 0x5a, 0x20, 0x52, 0xd8};
        if (below(8) != 0) {
            bus.select();
            const std::uint8_t opcode = kOpcodes[below(kOpcodes.size())];
            bus.write({&opcode, 1});
        }
        Bytes bytes(oneOf<std::uint64_t>({0, 1, 3, 3, 4, 20, 300}));
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(random_() & (below(3) == 0 ? 0xff : 0x11));
        }
        bus.write(bytes);
        if (below(2) == 0) {
            bus.read(bytes);
            for (const std::uint8_t byte : bytes) {
                note(byte);
            }
        }
        if (below(8) != 0) {
            bus.deselect();
        }
    }

    void useAux(AuxChannel& channel)
    {
        AuxRequest request{.command = static_cast<AuxCommand>(oneOf({0, 1, 2, 8, 8, 8, 9, 9})),
                           .middleOfTransaction = below(2) == 0,
                           .address = static_cast<std::uint32_t>(
                               oneOf<std::uint64_t>({0x50, 0x30, 0x100 + below(16), 0x202, below(0x800)})),
                           .length = static_cast<std::uint8_t>(below(17))};
        for (std::uint8_t& byte : request.data) {
            byte = static_cast<std::uint8_t>(anyValue());
        }
        const AuxReply reply = channel.transact(request);
        note(static_cast<std::uint64_t>(reply.answer));
        for (std::size_t index = 0; index < reply.length; ++index) {
            note(reply.data[index]);
        }
    }

    void useDriver()
    {
        note(card_.driver.memory().freeBytes());
        for (const MemoryNode& node : card_.driver.memory().nodes()) {
            note(node.firstPage);
            note(node.free ? 1 : 0);
        }
        NoPause pause;
        const Displays displays{.registers = *card_.path.registerRegion,
                                .units = card_.path.displays,
                                .ddc = card_.path.ddc,
                                .aux = card_.path.dpAux,
                                .pause = pause};
        note(static_cast<std::uint64_t>(
            card_.driver.followCard({.displays = displays, .features = *card_.path.features})));
    }

    Card& card_;
    Random random_;
    std::vector<AddressSpace*> spaces_;
    std::vector<I2cBus*> buses_;
    Bytes noted_;
};

class CardState : public testing::Test
{
protected:
    CardState() { hostTime = 1'000 * kSecond; }
    ~CardState() override { hostTime = 0; }
};

// Whatever has been done to a card: another one that is given its state cannot be told from it by anything done later.
TEST_F(CardState, IsAllThatTellsACardFromAnother)
{
    for (std::uint64_t seed = 0; seed < 16; ++seed) {
        const CardFacts& facts = seed % 2 == 0 ? kFirstBuiltinCard : kSecondBuiltinCard;
        const auto first = std::make_unique<Card>(facts);
        const auto second = std::make_unique<Card>(facts);
        Pages firstPages;
        Pages secondPages;
        first->card.visitMemories(firstPages);
        second->card.visitMemories(secondPages);
        for (std::uint64_t round = 0; round < 6; ++round) {
            Stirrer(*first, seed * 100 + round).stir(150);
            ASSERT_TRUE(second->setState(first->state()));
            ASSERT_EQ(second->state(), first->state());
            firstPages.copyTo(secondPages);
            const std::uint64_t now = hostTime;
            const Bytes expected = Stirrer(*first, ~seed - round).stir(150);
            hostTime = now;
            ASSERT_EQ(Stirrer(*second, ~seed - round).stir(150), expected) << seed << " " << round;
        }
    }
}

TEST_F(CardState, IsRefusedOrHarmlessWhateverItHolds)
{
    Random random(7);
    int refused = 0;
    int taken = 0;
    for (int round = 0; round < 400; ++round) {
        const CardFacts& facts = round % 2 == 0 ? kFirstBuiltinCard : kSecondBuiltinCard;
        const auto victim = std::make_unique<Card>(facts);
        Pages pages;
        victim->card.visitMemories(pages);
        Stirrer(*victim, random()).stir(60);
        Bytes image = victim->state();
        for (auto changes = 1 + random() % 3; changes > 0; --changes) {
            const std::size_t at = random() % image.size();
            const std::size_t length = std::min<std::size_t>(std::size_t{1} << random() % 4, image.size() - at);
            const auto value =
                static_cast<std::uint8_t>(std::array<std::uint64_t, 4>{0, 0xff, 2, random()}[random() % 4]);
            std::fill_n(image.begin() + static_cast<std::ptrdiff_t>(at), length, value);
        }
        if (!victim->setState(image)) {
            ++refused;
            continue;
        }
        ++taken;
        Stirrer(*victim, random()).stir(100);
        Bytes later = victim->state();
        EXPECT_TRUE(victim->setState(later)) << "what a card makes of a state is one itself";
    }
    EXPECT_GT(refused, 10);
    EXPECT_GT(taken, 100);
}

TEST_F(CardState, ThatIsTooShortIsRefused)
{
    const auto card = std::make_unique<Card>(kFirstBuiltinCard);
    Bytes image = card->state();
    image.pop_back();
    EXPECT_FALSE(card->setState(image));
}

/** A card with something else plugged in, or something else broken, than the first built-in one. */
struct Exchange {
    const char* name;
    void (*change)(CardFacts& facts);
};

void PrintTo(const Exchange& exchange, std::ostream* stream)
{
    *stream << exchange.name;
}

class ExchangedPart : public CardState, public testing::WithParamInterface<Exchange>
{
};

TEST_P(ExchangedPart, LeavesItTheSameCard)
{
    CardFacts facts = kFirstBuiltinCard;
    GetParam().change(facts);
    EXPECT_EQ(fingerprintOf(facts), fingerprintOf(kFirstBuiltinCard));
    for (std::uint64_t seed = 0; seed < 3; ++seed) {
        const auto before = std::make_unique<Card>(kFirstBuiltinCard);
        const auto after = std::make_unique<Card>(facts);
        Pages beforePages;
        Pages afterPages;
        before->card.visitMemories(beforePages);
        after->card.visitMemories(afterPages);
        for (int there = 0; there < 4; ++there) {
            Stirrer(*before, seed).stir(200);
            ASSERT_TRUE(after->setState(before->state()));
            Stirrer(*after, ~seed).stir(200);
            ASSERT_TRUE(before->setState(after->state())) << "and back";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    CardState, ExchangedPart,
    testing::Values(Exchange{"a short EDID", [](CardFacts& facts) { facts.monitors[1].edid = facts.monitors[0].edid; }},
                    Exchange{"a long EDID", [](CardFacts& facts) { facts.monitors[0].edid = facts.monitors[1].edid; }},
                    Exchange{"no monitor", [](CardFacts& facts) { facts.monitors = {}; }},
                    Exchange{"no sink", [](CardFacts& facts) { facts.sinks = {}; }},
                    Exchange{"other sinks", [](CardFacts& facts) { std::swap(facts.sinks[0], facts.sinks[1]); }},
                    Exchange{"another routing", [](CardFacts& facts) { facts.routing = 0; }},
                    Exchange{"no firmware", [](CardFacts& facts) { facts.mcu = McuCondition::kNoFirmware; }},
                    Exchange{"a dead EEPROM", [](CardFacts& facts) { facts.chips.eeprom.dead = true; }},
                    Exchange{"a dead monitor chip", [](CardFacts& facts) { facts.chips.ltc2990[0].seat.dead = true; }},
                    Exchange{"another load", [](CardFacts& facts) { facts.chips.ltc2990[0].supply = 0; }},
                    Exchange{"dead sensors", [](CardFacts& facts) {
                                 facts.sensors.temperatures = 3;
                                 facts.fanTurns = false;
                             }}));

TEST_F(CardState, OfAnotherPartLeavesThePartAsItComesUp)
{
    constexpr std::uint64_t kMailbox = mcu_mailbox::kBase;
    constexpr std::uint64_t kRouting = output_routing::kRegister;
    const AuxRequest readLaneCount{.command = AuxCommand::kNativeRead, .address = dpcd::kLaneCountSet, .length = 1};
    AuxRequest setLaneCount = readLaneCount;
    setLaneCount.command = AuxCommand::kNativeWrite;
    setLaneCount.data[0] = 2;
    Card before(kFirstBuiltinCard);
    before.path.dpAux[0]->transact(setLaneCount);
    before.path.dpAux[1]->transact(setLaneCount);
    before.path.registerRegion->write(kRouting, 4, 0);
    ASSERT_EQ(before.path.registerRegion->read(kMailbox, 4).value, mcu_mailbox::kSignatureValue);

    CardFacts facts = kFirstBuiltinCard;
    facts.sinks[0].edid = {};
    facts.mcu = McuCondition::kNoFirmware;
    Card other(facts);
    ASSERT_TRUE(other.setState(before.state()));
    EXPECT_EQ(other.path.dpAux[0]->transact(readLaneCount).data[0], 0);
    EXPECT_EQ(other.path.dpAux[1]->transact(readLaneCount).data[0], 2) << "this one has not been exchanged";
    EXPECT_EQ(other.path.registerRegion->read(kMailbox, 4).value, 0U);
    EXPECT_EQ(other.path.registerRegion->read(kRouting, 4).value, 0U);

    facts.routing ^= 1;
    Card rewired(facts);
    ASSERT_TRUE(rewired.setState(other.state()));
    EXPECT_EQ(rewired.path.registerRegion->read(kRouting, 4).value, facts.routing);
}

TEST_F(CardState, TellsBoolsAndEnumerationsApartFromOtherBytes)
{
    struct Part {
        bool on = false;
        std::uint8_t kind = 1;
        double number = 0;
        void visitState(StateVisitor& visit)
        {
            visit(on);
            visit.upTo(kind, 3);
            visit.finite(number);
        }
    };
    const auto isSound = [](std::uint8_t on, std::uint8_t kind, double number) {
        Bytes image{on, kind};
        const auto bytes = std::bit_cast<std::array<std::uint8_t, sizeof number>>(number);
        image.insert(image.end(), bytes.begin(), bytes.end());
        Part part;
        StateVisitor in = StateVisitor::copyingFrom(image);
        in(part);
        return in.sound();
    };
    EXPECT_TRUE(isSound(1, 3, 1e9));
    EXPECT_FALSE(isSound(2, 3, 1e9));
    EXPECT_FALSE(isSound(1, 4, 1e9));
    EXPECT_FALSE(isSound(1, 3, 1e300));
    EXPECT_FALSE(isSound(1, 3, std::numeric_limits<double>::quiet_NaN()));
}

TEST(CardsClock, GoesOnOverProgramsAndRestartsOfTheHost)
{
    const auto stateOf = [](HostClock& clock) {
        Bytes image(16);
        StateVisitor::copyingTo(image)(clock);
        return image;
    };
    HostClock before;
    before.keep();
    hostTime = 5'000 * kSecond;
    EXPECT_EQ(before.nanoseconds(), 5'000 * kSecond);
    HostClock after;
    after.keep();
    StateVisitor::copyingFrom(stateOf(before))(after);
    hostTime = 5'001 * kSecond;
    EXPECT_EQ(after.nanoseconds(), 5'001 * kSecond) << "time goes on between programs";
    hostTime = 3 * kSecond;
    EXPECT_EQ(after.nanoseconds(), 5'001 * kSecond) << "the host has been started again";
    hostTime = 4 * kSecond;
    EXPECT_EQ(after.nanoseconds(), 5'002 * kSecond);
    HostClock later;
    later.keep();
    StateVisitor::copyingFrom(stateOf(after))(later);
    hostTime = 9 * kSecond;
    EXPECT_EQ(later.nanoseconds(), 5'007 * kSecond);
    hostTime = 0;
}

/** A card that is kept in a folder of the test's own. */
class KeptCardTest : public testing::Test
{
protected:
    /** A program's view of the kept card: a card of its own in the same folder. */
    struct View {
        explicit View(const std::string& folder, std::uint64_t patience = kLockPatience)
            : card(kFirstBuiltinCard),
              keeper({0, card.card, card.driver, 1}, patience),
              result(keeper.open(folder.c_str()))
        {
        }

        std::uint32_t read(std::uint64_t address)
        {
            const CardHold hold(&keeper);
            return static_cast<std::uint32_t>(card.path.registers->read(address, 4).value);
        }

        Card card;
        CardKeeper keeper;
        int result;
    };

    std::unique_ptr<View> open() const
    {
        auto view = std::make_unique<View>(folder());
        EXPECT_EQ(view->result, VEK_OK);
        return view;
    }

    std::string folder() const { return scratch_.path("state"); }

    /** A register that only holds what is written, of a device. */
    static constexpr std::uint64_t kCounter = power_unit::kWindowBase + power_unit::kSimulated;

    static void increment(View& view, int times)
    {
        for (int time = 0; time < times; ++time) {
            const CardHold hold(&view.keeper);
            AddressSpace& registers = *view.card.path.registers;
            registers.write(kCounter, 4, registers.read(kCounter, 4).value + 1);
        }
    }

private:
    ScratchFolder scratch_;
};

TEST_F(KeptCardTest, LosesNoUpdateOfTwoPrograms)
{
    constexpr int kTimes = 2000;
    std::array<pid_t, 2> programs{};
    for (pid_t& program : programs) {
        program = forked::start([&] { increment(*open(), kTimes); });
    }
    for (const pid_t program : programs) {
        EXPECT_EQ(forked::statusOf(program), 0);
    }
    EXPECT_EQ(open()->read(kCounter), 2U * kTimes);
}

TEST_F(KeptCardTest, LosesNoUpdateOfTwoThreads)
{
    constexpr int kTimes = 2000;
    const auto view = open();
    std::thread other([&] { increment(*view, kTimes); });
    increment(*view, kTimes);
    other.join();
    EXPECT_EQ(view->read(kCounter), 2U * kTimes);
}

TEST_F(KeptCardTest, SeesAtOnceWhatAnotherProgramHasDone)
{
    const auto here = open();
    const auto there = open();
    for (int turn = 1; turn <= 50; ++turn) {
        increment(turn % 2 == 0 ? *here : *there, 1);
        EXPECT_EQ(here->read(kCounter), static_cast<std::uint32_t>(turn));
        EXPECT_EQ(there->read(kCounter), static_cast<std::uint32_t>(turn));
    }
}

TEST_F(KeptCardTest, IsRefusedWhileAnotherProgramKeepsItAndBackWhenThatIsKilled)
{
    open();
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const pid_t holder = forked::start([&] {
        const auto view = open();
        increment(*view, 1);
        view->keeper.enter();
        view->card.path.registers->write(kCounter, 4, 77);
        EXPECT_EQ(write(pipe[1], "", 1), 1);
        pause();
    });
    char byte = 0;
    ASSERT_EQ(read(pipe[0], &byte, 1), 1);
    constexpr std::uint64_t kShort = 20'000'000;
    View refused(folder(), kShort);
    EXPECT_EQ(refused.result, VEK_TIMED_OUT);
    kill(holder, SIGKILL);
    forked::statusOf(holder);
    EXPECT_EQ(open()->read(kCounter), 1U) << "what was not finished is not there";
    close(pipe[0]);
    close(pipe[1]);
}

/** Each access of a long run would else wait anew, for minutes in all. */
TEST_F(KeptCardTest, WaitsOnceForALongRunWhileItIsKept)
{
    constexpr std::uint64_t kPatience = 800'000'000;
    constexpr int kAccesses = 1000;
    const auto other = open();
    View view(folder(), kPatience);
    ASSERT_EQ(view.result, VEK_OK);
    ASSERT_EQ(other->keeper.enter(), VEK_OK);
    for (int access = 0; access < kAccesses; ++access) {
        ASSERT_EQ(view.keeper.enter(), VEK_TIMED_OUT);
        ASSERT_EQ(view.keeper.leave(), VEK_TIMED_OUT);
    }
    EXPECT_EQ(other->keeper.leave(), VEK_OK);
    EXPECT_EQ(view.keeper.enter(), VEK_OK) << "at once when the other has left";
    EXPECT_EQ(view.keeper.leave(), VEK_OK);
}

TEST_F(KeptCardTest, AnswersTimedOutToEveryKindOfAccessWhileItIsKept)
{
    constexpr std::uint64_t kShort = 20'000'000;
    const auto other = open();
    View view(folder(), kShort);
    ASSERT_EQ(view.result, VEK_OK);
    ASSERT_EQ(other->keeper.enter(), VEK_OK);
    EXPECT_EQ(view.keeper.enter(), VEK_TIMED_OUT);
    EXPECT_EQ(view.keeper.enter(), VEK_TIMED_OUT) << "at once, without another wait";
    EXPECT_EQ(view.keeper.leave(), VEK_TIMED_OUT);
    EXPECT_EQ(view.keeper.leave(), VEK_TIMED_OUT);
    EXPECT_EQ(other->keeper.leave(), VEK_OK);
    EXPECT_EQ(view.keeper.enter(), VEK_OK);
    EXPECT_EQ(view.keeper.leave(), VEK_OK);
}

TEST_F(KeptCardTest, CanBeReachedByItsKeeperOnly)
{
    Card card(kFirstBuiltinCard);
    const OpenedPath opened = keepPath(card.path, {0, card.card, card.driver, 1}, folder().c_str());
    ASSERT_EQ(opened.result, VEK_OK);
    std::array<std::uintptr_t, sizeof(AccessPath) / sizeof(std::uintptr_t)> plain{};
    std::array<std::uintptr_t, sizeof(AccessPath) / sizeof(std::uintptr_t)> kept{};
    std::memcpy(plain.data(), &card.path, sizeof(AccessPath));
    std::memcpy(kept.data(), opened.path, sizeof(AccessPath));
    const auto first = reinterpret_cast<std::uintptr_t>(&card.card);
    int targets = 0;
    for (std::size_t word = 0; word < kept.size(); ++word) {
        targets += plain[word] - first < sizeof(SimulatedCard) ? 1 : 0;
        EXPECT_FALSE(kept[word] - first < sizeof(SimulatedCard)) << "word " << word << " of the path";
    }
    EXPECT_GT(targets, 30);
    EXPECT_EQ(opened.path->kernelMemory, card.path.kernelMemory);
}

/** A state of one byte over and over. */
class SnapshotTest : public testing::Test
{
protected:
    static constexpr SnapshotKind kKind{.size = 333, .layout = 5, .card = 6};

    SnapshotTest() : file_(Snapshot::fileSize(kKind.size) / sizeof(std::uint64_t) + 1)
    {
        snapshot().create(kKind, Bytes(kKind.size, 1));
    }

    Snapshot snapshot() { return {bytes(), kKind.size}; }
    unsigned char* bytes() { return reinterpret_cast<unsigned char*>(file_.data()); }

    void store(std::uint64_t number) { snapshot().store(number, Bytes(kKind.size, static_cast<std::uint8_t>(number))); }

    void expectFound(std::uint64_t number)
    {
        const Snapshot::Found found = snapshot().find();
        ASSERT_EQ(found.number, number);
        EXPECT_EQ(Bytes(found.state.begin(), found.state.end()), Bytes(kKind.size, static_cast<std::uint8_t>(number)));
    }

    std::vector<std::uint64_t>& file() { return file_; }

private:
    std::vector<std::uint64_t> file_;
};

TEST_F(SnapshotTest, FindsTheNewest)
{
    for (std::uint64_t number = 2; number < 9; ++number) {
        store(number);
        EXPECT_EQ(snapshot().newest(), number);
        expectFound(number);
    }
}

TEST_F(SnapshotTest, FindsTheOneBeforeWhateverPartOfTheNextIsThere)
{
    Random random(3);
    for (std::uint64_t number = 2; number < 200; ++number) {
        const std::vector<std::uint64_t> before = file();
        store(number);
        const std::vector<std::uint64_t> after = file();
        for (std::size_t word = 0; word < file().size(); ++word) {
            // The number is stored last.
            const bool isNumber = before[word] != after[word] && after[word] == number && before[word] + 2 >= number &&
                                  before[word] <= number && word % 8 == 0;
            file()[word] = isNumber || random() % 2 == 0 ? before[word] : after[word];
        }
        expectFound(number - 1);
        file() = after;
        expectFound(number);
    }
}

TEST_F(SnapshotTest, TellsWhatItIsNot)
{
    EXPECT_EQ(snapshot().fault(kKind), nullptr);
    for (const SnapshotKind& other : {SnapshotKind{334, 5, 6}, SnapshotKind{333, 4, 6}, SnapshotKind{333, 5, 7}}) {
        EXPECT_NE(snapshot().fault(other), nullptr);
    }
    for (std::size_t at = 0; at < 0x28; ++at) {
        bytes()[at] ^= 0x10;
        EXPECT_NE(snapshot().fault(kKind), nullptr) << at;
        bytes()[at] ^= 0x10;
    }
    EXPECT_EQ(snapshot().fault(kKind), nullptr);
}

}  // namespace
}  // namespace vek
