// Consoles that share a card through the library, are killed at any moment, and lose the card's files from under them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>

#include "child_process.h"
#include "forked_test.h"
#include "scratch_folder.h"
#include "vek.h"

namespace
{

using ::testing::MatchesRegex;

constexpr std::uint64_t kStorage = 0x2000;
constexpr std::uint64_t kSimulatedTemperature = 0x30c010;
constexpr int kEeprom = 0x50;
constexpr std::size_t kPage = 256;
constexpr std::size_t kSector = 4096;

class SharedCard : public testing::Test
{
protected:
    SharedCard() { setenv("VEK_STATE_FOLDER", scratch_.path("state").c_str(), 1); }
    ~SharedCard() override { unsetenv("VEK_STATE_FOLDER"); }

    /** Runs a function in two processes at a time, which get 0 and 1. */
    static void runTwice(const std::function<void(int)>& function)
    {
        const std::array<pid_t, 2> children{forked::start([&] { function(0); }), forked::start([&] { function(1); })};
        for (const pid_t child : children) {
            EXPECT_EQ(forked::statusOf(child), 0);
        }
    }

    std::string file(const std::string& name) const { return scratch_.path("state/card0/" + name); }

private:
    ScratchFolder scratch_;
};

/** Memory that processes share. */
template <typename Object>
class Shared
{
public:
    Shared()
        : object_(static_cast<Object*>(
              mmap(nullptr, sizeof(Object), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)))
    {
    }
    ~Shared() { munmap(object_, sizeof(Object)); }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;

    Object* operator->() const { return object_; }
    Object& operator*() const { return *object_; }

private:
    Object* object_;
};

TEST_F(SharedCard, ProgramsItsFlashForTwoAtATime)
{
    constexpr int kPages = 24;
    runTwice([](int which) {
        ASSERT_EQ(vekRwOpen(0), VEK_OK);
        for (int page = which; page < kPages; page += 2) {
            std::array<std::uint8_t, kPage> data;
            data.fill(static_cast<std::uint8_t>(page));
            ASSERT_EQ(vekSpiProgram(data.data(), page * static_cast<int>(kPage), kPage), VEK_OK) << page;
        }
    });
    EXPECT_EQ(forked::statusOf(forked::start([] {
                  ASSERT_EQ(vekRwOpen(0), VEK_OK);
                  std::array<std::uint8_t, kPages * kPage> all{};
                  ASSERT_EQ(vekSpiReadBuffer(all.data(), 0, all.size()), VEK_OK);
                  for (std::size_t at = 0; at < all.size(); ++at) {
                      ASSERT_EQ(all[at], at / kPage) << at;
                  }
              })),
              0);
}

TEST_F(SharedCard, ServesWholeTransfersToTwoAtATime)
{
    runTwice([](int which) {
        ASSERT_EQ(vekRwOpen(0), VEK_OK);
        for (int turn = 0; turn < 20; ++turn) {
            const auto written = static_cast<std::uint8_t>(16 * which + turn);
            const auto place = static_cast<std::uint32_t>(0xc0 + which);
            std::uint8_t read = 0;
            ASSERT_EQ(vekI2cWrite(0, kEeprom, place, 1, &written), VEK_OK);
            ASSERT_EQ(vekI2cRead(0, kEeprom, place, 1, &read), VEK_OK);
            ASSERT_EQ(read, written);

            // An EDID of more than two blocks, which needs the segment pointer.
            std::array<std::uint8_t, VEK_EDID_BUFFER_SIZE> edid{};
            int length = 0;
            ASSERT_EQ(vekDpAuxEdidGet(0, edid.data(), &length), VEK_OK);
            ASSERT_EQ(length, 512);
            std::uint8_t* bytes = nullptr;
            int valid = 0;
            ASSERT_EQ(vekDDCRead(which, &length, &bytes, &valid), VEK_OK);
            ASSERT_EQ(valid, 1);
        }
        std::array<float, 4> volts{};
        for (int turn = 0; turn < 3; ++turn) {
            ASSERT_EQ(vekLTC2990GetVolt4(1, 0, &volts[0], &volts[1], &volts[2], &volts[3], 0, 1), VEK_OK);
            ASSERT_NEAR(volts[0], 0.903, 0.01);
        }
    });
}

TEST_F(SharedCard, OpensFunctionsForTwoAtATime)
{
    for (int round = 0; round < 20; ++round) {
        runTwice([](int which) {
            ASSERT_EQ(vekRwOpen(0), VEK_OK);
            for (const char trace : {'1', '2'}) {
                std::string command = std::string("func 3d ") + static_cast<char>(trace + 2 * which);
                std::freopen("/dev/null", "w", stdout);
                ASSERT_EQ(tovira_func(command.data(), 0), VEK_OK);
            }
        });
    }
    EXPECT_EQ(forked::statusOf(forked::start([] {
                  ASSERT_EQ(vekRwOpen(0), VEK_OK);
                  std::uint32_t functions = 0;
                  ASSERT_EQ(vekRegReadLong(0x30d000, &functions), VEK_OK);
                  ASSERT_EQ(functions, 0xfU);
              })),
              0);
}

/** What a card holds in the places that the commands below change. */
struct Contents {
    static constexpr std::size_t kCells = 8;
    static constexpr std::size_t kFlashSize = 4 * kSector;

    std::array<std::uint32_t, kCells> registers;
    std::array<std::uint32_t, kCells> videoMemory;
    std::array<std::uint8_t, kCells> eeprom;
    std::array<std::uint8_t, kCells> dpcd;
    std::uint32_t simulated;
    std::array<std::uint8_t, kFlashSize> flash;

    bool operator==(const Contents&) const = default;
};

constexpr std::uint64_t kVideoMemory = 0x5'4321'0000;

constexpr std::uint64_t videoAddress(std::size_t cell)
{
    return (kVideoMemory & 0xffff'0000) + cell * 0x1000'0000;
}

/** One command of a mixed workload, the same for a number whoever asks. */
class Command
{
public:
    explicit Command(std::uint64_t number) : random_(number)
    {
        kind_ = random_() % 8;
        cell_ = random_() % Contents::kCells;
        value_ = static_cast<std::uint32_t>(random_());
        page_ = random_() % (Contents::kFlashSize / kPage);
        for (std::uint8_t& byte : data_) {
            byte = static_cast<std::uint8_t>(random_());
        }
    }

    bool changesFlash() const { return kind_ >= 5; }
    bool erases() const { return kind_ == 7; }
    std::size_t flashFirst() const { return erases() ? page_ * kPage / kSector * kSector : page_ * kPage; }
    std::size_t flashSize() const { return erases() ? kSector : kPage; }

    /** Carries it out on the open card. */
    void run() const
    {
        const auto byte = static_cast<std::uint8_t>(value_);
        switch (kind_) {
            case 0:
                vekRegWriteLong(kStorage + 4 * cell_, value_);
                break;
            case 1:
                vekVramWriteLong(videoAddress(cell_), value_);
                break;
            case 2:
                vekI2cWrite(0, kEeprom, static_cast<std::uint32_t>(0xc0 + cell_), 1, &byte);
                break;
            case 3:
                vekDpAuxWrite(0, static_cast<std::uint32_t>(0x300 + cell_), byte);
                break;
            case 4:
                vekRegWriteLong(kSimulatedTemperature, value_);
                break;
            case 7:
                vekSpiErase(static_cast<int>(flashFirst()), kSector);
                break;
            default:
                vekSpiProgram(data_.data(), static_cast<int>(flashFirst()), kPage);
                break;
        }
    }

    /** What it makes of a card that finishes it. */
    void apply(Contents& contents) const
    {
        const auto byte = static_cast<std::uint8_t>(value_);
        auto* const flash = contents.flash.data() + flashFirst();
        switch (kind_) {
            case 0:
                contents.registers[cell_] = value_;
                break;
            case 1:
                contents.videoMemory[cell_] = value_;
                break;
            case 2:
                contents.eeprom[cell_] = byte;
                break;
            case 3:
                contents.dpcd[cell_] = byte;
                break;
            case 4:
                contents.simulated = value_;
                break;
            case 7:
                std::fill_n(flash, kSector, std::uint8_t{0xff});
                break;
            default:
                for (std::size_t at = 0; at < kPage; ++at) {
                    flash[at] &= data_[at];
                }
                break;
        }
    }

private:
    std::mt19937_64 random_;
    std::uint64_t kind_;
    std::size_t cell_;
    std::uint32_t value_;
    std::size_t page_;
    std::array<std::uint8_t, kPage> data_{};
};

/** Reads what the open card holds. */
void readContents(Contents& contents)
{
    for (std::size_t cell = 0; cell < Contents::kCells; ++cell) {
        ASSERT_EQ(vekRegReadLong(kStorage + 4 * cell, &contents.registers[cell]), VEK_OK);
        ASSERT_EQ(vekVramReadLong(videoAddress(cell), &contents.videoMemory[cell]), VEK_OK);
        ASSERT_EQ(vekDpAuxRead(0, static_cast<std::uint32_t>(0x300 + cell), &contents.dpcd[cell]), VEK_OK);
    }
    ASSERT_EQ(vekI2cRead(0, kEeprom, 0xc0, Contents::kCells, contents.eeprom.data()), VEK_OK);
    ASSERT_EQ(vekRegReadLong(kSimulatedTemperature, &contents.simulated), VEK_OK);
    ASSERT_EQ(vekSpiReadBuffer(contents.flash.data(), 0, Contents::kFlashSize), VEK_OK);
}

struct Progress {
    std::atomic<std::uint64_t> begun;
    std::atomic<std::uint64_t> finished;
    Contents contents;
};

/** Expects that a card holds what the finished commands have made of it, and of the one under way, if any, all, nothing
    or, of what a flash does then, a part. */
void expectKept(const Contents& found, const Contents& finished, const Command* underWay)
{
    if (underWay == nullptr || found == finished) {
        ASSERT_TRUE(found == finished);
        return;
    }
    Contents whole = finished;
    underWay->apply(whole);
    if (!underWay->changesFlash()) {
        ASSERT_TRUE(found == whole);
        return;
    }
    Contents elsewhere = found;
    std::copy_n(finished.flash.begin() + static_cast<std::ptrdiff_t>(underWay->flashFirst()), underWay->flashSize(),
                elsewhere.flash.begin() + static_cast<std::ptrdiff_t>(underWay->flashFirst()));
    ASSERT_TRUE(elsewhere == finished) << "nothing else is touched";
    for (std::size_t at = 0; at < underWay->flashSize(); ++at) {
        const std::size_t place = underWay->flashFirst() + at;
        ASSERT_TRUE(found.flash[place] == finished.flash[place] || found.flash[place] == whole.flash[place]) << place;
    }
}

TEST_F(SharedCard, KeepsWhatWasFinishedWhenAConsoleIsKilled)
{
    constexpr int kKills = 200;
    const Shared<Progress> progress;
    std::mt19937_64 random(11);
    const auto look = [&] {
        EXPECT_EQ(forked::statusOf(forked::start([&] {
                      ASSERT_EQ(vekRwOpen(0), VEK_OK);
                      readContents(progress->contents);
                  })),
                  0);
    };
    look();
    Contents expected = progress->contents;
    int cutShort = 0;
    for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
        const std::uint64_t first = progress->finished;
        const pid_t console = forked::start([&] {
            ASSERT_EQ(vekRwOpen(0), VEK_OK);
            for (;;) {
                const Command command(progress->begun++);
                command.run();
                ++progress->finished;
            }
        });
        const std::uint64_t enough = first + random() % 12;
        while (progress->finished < enough) {
        }
        for (std::uint64_t moment = random() % 40'000; moment > 0; --moment) {
            std::atomic_signal_fence(std::memory_order_seq_cst);
        }
        ASSERT_EQ(::kill(console, SIGKILL), 0);
        ASSERT_EQ(forked::statusOf(console), SIGKILL);
        for (std::uint64_t number = first; number < progress->finished; ++number) {
            Command(number).apply(expected);
        }
        const bool underWay = progress->begun != progress->finished;
        const Command last(progress->finished);
        cutShort += underWay ? 1 : 0;
        look();
        expectKept(progress->contents, expected, underWay ? &last : nullptr);
        expected = progress->contents;
        progress->finished = progress->begun.load();
    }
    EXPECT_GT(cutShort, kKills / 4);
}

TEST_F(SharedCard, KeepsTheFlashAsItWasWhenThePowerWasCutDuringItsProgramming)
{
    constexpr std::size_t kSize = 0x1'0000;
    const Shared<std::array<std::uint8_t, kSize>> flash;
    std::array<std::uint8_t, kSize> image{};
    std::mt19937_64 random(5);
    std::generate(image.begin(), image.end(), [&] { return static_cast<std::uint8_t>(random()); });
    for (int cut = 0; cut < 12 && !HasFailure(); ++cut) {
        const Shared<std::atomic<int>> going;
        const pid_t console = forked::start([&] {
            ASSERT_EQ(vekRwOpen(0), VEK_OK);
            ASSERT_EQ(vekSpiErase(0, kSize), VEK_OK);
            *going = 1;
            vekSpiProgram(image.data(), 0, kSize);
            pause();
        });
        while (*going == 0) {
        }
        for (std::uint64_t moment = random() % 3'000'000; moment > 0; --moment) {
            std::atomic_signal_fence(std::memory_order_seq_cst);
        }
        ASSERT_EQ(kill(console, SIGKILL), 0);
        ASSERT_EQ(forked::statusOf(console), SIGKILL);
        EXPECT_EQ(forked::statusOf(forked::start([&] {
                      ASSERT_EQ(vekRwOpen(0), VEK_OK);
                      ASSERT_EQ(vekSpiReadBuffer(flash->data(), 0, kSize), VEK_OK);
                  })),
                  0);
        std::size_t whole = 0;
        while (whole < kSize && std::equal(&image[whole], &image[whole] + kPage, &(*flash)[whole])) {
            whole += kPage;
        }
        for (std::size_t at = whole; at < kSize; ++at) {
            const bool partly = at < whole + kPage && (*flash)[at] == image[at];
            ASSERT_TRUE(partly || (*flash)[at] == 0xff) << at;
        }
    }
    EXPECT_EQ(forked::statusOf(forked::start([&] {
                  ASSERT_EQ(vekRwOpen(0), VEK_OK);
                  ASSERT_EQ(vekSpiErase(0, kSize), VEK_OK);
                  ASSERT_EQ(vekSpiProgram(image.data(), 0, kSize), VEK_OK);
              })),
              0);
}

class CutFile : public SharedCard, public testing::WithParamInterface<const char*>
{
};

TEST_P(CutFile, EndsTheKeepingOfTheCardButNotTheProgram)
{
    const std::string name = file(GetParam());
    const child_process::Result result = child_process::runForked([&] {
        std::uint32_t value = 0;
        if (vekRwOpen(0) != VEK_OK || vekRegWriteLong(kStorage, 1) != VEK_OK || vekVramWriteLong(0, 1) != VEK_OK) {
            _exit(2);
        }
        std::filesystem::resize_file(name, 0);
        std::array<std::uint8_t, kPage> data{};
        vekRegReadLong(kStorage, &value);
        vekVramReadLong(0, &value);
        vekAmbaWriteLong(0x2000'0000, 1);
        vekCrtcWriteByte(1, 1);
        vekSpiProgram(data.data(), 0, kPage);
        const bool refused = vekRegWriteLong(kSimulatedTemperature, 1) < 0 && vekRegWriteLong(kStorage, 2) < 0 &&
                             vekRegReadLong(kStorage, &value) < 0 && vekVramWriteLong(0, 2) < 0 &&
                             vekVramReadLong(0, &value) < 0 && vekSpiErase(0, kSector) < 0 &&
                             vekMultVramWriteLong(1, 0, 100, nullptr) < 0;
        _exit(refused ? 0 : 3);
    });
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error, name + ": a part cannot be reached any more; the card is no longer kept\n");
}

TEST_F(SharedCard, ChangesNothingMoreOnceAPartIsLost)
{
    const std::string registers = file("registers");
    const child_process::Result result = child_process::runForked([&] {
        std::uint32_t value = 0;
        if (vekRwOpen(0) != VEK_OK || vekRegWriteLong(kStorage, 1) != VEK_OK || vekVramWriteLong(0, 1) != VEK_OK) {
            _exit(2);
        }
        std::filesystem::resize_file(registers, 0);
        vekRegReadLong(kStorage, &value);
        const bool refused = vekVramWriteLong(0, 2) < 0 && vekMultVramWriteLong(2, 0, 100, nullptr) < 0;
        _exit(refused ? 0 : 3);
    });
    EXPECT_EQ(result.exitStatus, 0);
    std::ifstream kept(file("video-memory"), std::ios::binary);
    EXPECT_EQ(kept.get(), 1);
}

INSTANTIATE_TEST_SUITE_P(SharedCard, CutFile,
                         testing::Values("state", "registers", "video-memory", "board-ram", "crtc-registers", "flash"),
                         [](const auto& test) {
                             std::string name = test.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

/** Touches a page of a file that is gone, of which the library knows nothing. */
void faultElsewhere(const std::string& name)
{
    std::FILE* foreign = std::fopen(name.c_str(), "w+");
    std::filesystem::resize_file(name, 4096);
    auto* page = static_cast<volatile char*>(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fileno(foreign), 0));
    std::filesystem::resize_file(name, 0);
    static_cast<void>(*page);
}

TEST_F(SharedCard, LeavesTheFaultsOfOthersToThem)
{
    const ScratchFolder scratch;
    const auto byDefault = child_process::runForked([&] {
        std::signal(SIGBUS, SIG_DFL);
        if (vekRwOpen(0) == VEK_OK) {
            faultElsewhere(scratch.path("foreign"));
        }
    });
    EXPECT_EQ(byDefault.signal, SIGBUS);
    const auto handled = child_process::runForked([&] {
        std::signal(SIGBUS, [](int) { _exit(42); });
        if (vekRwOpen(0) == VEK_OK) {
            faultElsewhere(scratch.path("foreign"));
        }
    });
    EXPECT_EQ(handled.exitStatus, 42);
    const auto sent = child_process::runForked([&] {
        std::signal(SIGBUS, SIG_DFL);
        if (vekRwOpen(0) == VEK_OK) {
            raise(SIGBUS);
        }
    });
    EXPECT_EQ(sent.signal, SIGBUS);
    const auto ignored = child_process::runForked([&] {
        std::signal(SIGBUS, SIG_IGN);
        if (vekRwOpen(0) == VEK_OK) {
            raise(SIGBUS);
        }
    });
    EXPECT_EQ(ignored.exitStatus, 0);
}

}  // namespace
