#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "axi_data_lines.h"
#include "vek.h"
#include "working_folder.h"

namespace
{

namespace fs = std::filesystem;

constexpr uint64_t kQz201 = 0x309000;
constexpr uint64_t kQz202 = 0x288800;
constexpr const char* kHeader = "time,master,reads,writes,bytes,latency\n";

uint32_t reg(uint64_t address)
{
    uint32_t value = 0;
    EXPECT_EQ(vekRegReadLong(address, &value), VEK_OK);
    return value;
}

void setReg(uint64_t address, uint32_t value)
{
    EXPECT_EQ(vekRegWriteLong(address, value), VEK_OK);
}

int openDescriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

/** A collector thread that is cancelled at the end of its scope at the latest. */
class Collector
{
public:
    explicit Collector(std::string folder) : folder_(std::move(folder))
    {
        EXPECT_EQ(pthread_create(&thread_, nullptr, vek_thread_qz202monitor, folder_.data()), 0);
    }
    ~Collector() { cancel(); }
    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    /** Cancels it, if it still runs. @return whether it was cancelled before it ended by itself. */
    bool cancel()
    {
        if (joined_) {
            return false;
        }
        joined_ = true;
        pthread_cancel(thread_);
        void* result = nullptr;
        EXPECT_EQ(pthread_join(thread_, &result), 0);
        return result == PTHREAD_CANCELED;
    }

private:
    std::string folder_;
    pthread_t thread_{};
    bool joined_ = false;
};

/** Calls the collector in this thread, from which it has to come back by itself. */
void* collect(std::string folder)
{
    return vek_thread_qz202monitor(folder.data());
}

/** Waits until a condition holds, for ten seconds at most. */
template <typename Condition>
bool eventually(Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

class AxiMonitor : public testing::Test
{
protected:
    AxiMonitor() { select(0); }
    ~AxiMonitor() override
    {
        select(0);
        setReg(kQz201, 2);
        setReg(kQz201, 4);
        select(1);
        setReg(kQz202, 0);
        setReg(kQz202, 2);
        vekClose();
    }

    static void select(int card) { ASSERT_GE(vekRwOpen(card), 0); }

    /** The text of a file in the working directory, empty when it is not there. */
    std::string text(const std::string& name) const
    {
        return fs::exists(folder.path(name)) ? folder.read(name) : std::string();
    }

    WorkingFolder folder;
};

TEST_F(AxiMonitor, CountsOnTheFirstCardBetweenStartAndFinal)
{
    setReg(kQz201, 4);
    setReg(kQz201, 1);
    EXPECT_EQ(reg(kQz201), 1U);
    setReg(kQz201, 2);
    EXPECT_EQ(reg(kQz201), 2U);
    EXPECT_EQ(reg(kQz201 + 0x00c), 8U);
    uint64_t reads = 0;
    EXPECT_EQ(vekRegReadQuad(kQz201 + 0x100, &reads), VEK_OK);
    EXPECT_GT(reads, 0U);
    setReg(kQz201, 4);
    EXPECT_EQ(vekRegReadQuad(kQz201 + 0x100, &reads), VEK_OK);
    EXPECT_EQ(reads, 0U);
}

TEST_F(AxiMonitor, IsPlainStorageWhereTheOtherChipHasIt)
{
    for (const uint64_t address : {kQz202, kQz202 + 8, kQz202 + 0x100}) {
        setReg(address, 0x12345678);
        EXPECT_EQ(reg(address), 0x12345678U);
        setReg(address, 0);
    }
    select(1);
    setReg(kQz201, 0x12345678);
    EXPECT_EQ(reg(kQz201), 0x12345678U);
    setReg(kQz201, 0);
    setReg(kQz202 + 8, 77);
    EXPECT_EQ(reg(kQz202 + 8), 77U);
    EXPECT_EQ(reg(kQz202 + 0x00c), 6U);
}

TEST_F(AxiMonitor, CollectsARunIntoAFile)
{
    setReg(kQz201, 1);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_OK);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(reg(kQz201), 1U) << "the run goes on";
    const std::vector<AxiDataLine> lines = axiDataLines(text("axiMonitorData"));
    ASSERT_EQ(lines.size(), 10U * 8U);
    const std::vector<std::string> masters = {"host0", "3d0", "3d1", "2d0", "vpu0", "display0", "dma0", "mcu0"};
    std::set<uint64_t> lastReads;
    for (std::size_t index = 0; index < lines.size(); ++index) {
        EXPECT_EQ(lines[index].master, masters[index % 8]);
        if (index >= 8) {
            EXPECT_GE(lines[index].time, lines[index - 8].time);
            EXPECT_GT(lines[index].reads, lines[index - 8].reads);
            EXPECT_GT(lines[index].bytes, lines[index - 8].bytes);
            EXPECT_GT(lines[index].latency, 10);
        }
        if (index >= lines.size() - 8) {
            lastReads.insert(lines[index].reads);
        }
    }
    EXPECT_EQ(lastReads.size(), 8U) << "each master does something else";
}

TEST_F(AxiMonitor, EndsTheCollectionWhenTheRunIsOver)
{
    setReg(kQz201, 1);
    setReg(kQz201, 2);
    folder.write("axiMonitorData", std::string(100000, 'x'));
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_OK);
    EXPECT_EQ(axiDataLines(text("axiMonitorData")).size(), 8U);
}

TEST_F(AxiMonitor, RefusesToCollectIntoAnythingButAFile)
{
    const auto target = folder.write("target", "untouched");
    fs::create_symlink(target, folder.path("axiMonitorData"));
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_IO_ERROR);
    EXPECT_EQ(text("target"), "untouched");
    fs::remove(folder.path("axiMonitorData"));
    ASSERT_EQ(mkfifo(folder.path("axiMonitorData").c_str(), 0600), 0);
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_IO_ERROR);
    // A reader at the other end makes the FIFO no better.
    const int reader = open(folder.path("axiMonitorData").c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_IO_ERROR);
    close(reader);
    fs::remove(folder.path("axiMonitorData"));
    fs::create_directory(folder.path("axiMonitorData"));
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_IO_ERROR);
}

TEST_F(AxiMonitor, LeavesFilesWithSeveralNamesAlone)
{
    const auto target = folder.write("target", "untouched");
    fs::create_hard_link(target, folder.path("axiMonitorData"));
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_IO_ERROR);
    EXPECT_EQ(text("target"), "untouched");
    fs::remove(folder.path("target"));
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_OK);
    EXPECT_EQ(fs::hard_link_count(folder.path("axiMonitorData")), 1U);
    EXPECT_EQ(axiDataLines(text("axiMonitorData")).size(), 8U);
}

TEST_F(AxiMonitor, LeavesNothingElseInTheFolder)
{
    folder.write(".axiMonitorData.new", "left by a program that was killed");
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_OK);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path("")), fs::directory_iterator()), 1);
}

TEST_F(AxiMonitor, CollectsFromTheChipOnlyThatACollectorIsFor)
{
    EXPECT_EQ(collect("1"), nullptr);
    select(1);
    EXPECT_EQ(vekMonitorAxiTrans_QZ201(), VEK_NOT_AVAILABLE);
    EXPECT_TRUE(fs::is_empty(folder.path("")));
}

class AxiCollector : public AxiMonitor
{
protected:
    AxiCollector() { select(1); }

    /** Lets the timer run, with spans of so many cycles. */
    static void startTimer(uint32_t cycles)
    {
        setReg(kQz202 + 8, cycles);
        setReg(kQz202, 0x14);
    }

    std::size_t collectedLines(const std::string& name) const { return axiDataLines(text(name)).size(); }
};

TEST_F(AxiCollector, WritesTheLastSpanUntilItIsCancelled)
{
    startTimer(1'000'000);
    const int descriptors = openDescriptors();
    Collector collector("9557");
    ASSERT_TRUE(eventually([&] { return text("9557/axiMonitorData").size() > 1000; }));
    EXPECT_TRUE(collector.cancel());
    EXPECT_EQ(openDescriptors(), descriptors);
    const std::vector<AxiDataLine> lines = axiDataLines(text("9557/axiMonitorData"));
    ASSERT_GE(lines.size(), 12U);
    EXPECT_EQ(lines.size() % 6, 0U);
    std::map<std::string, uint64_t> reads;
    for (const AxiDataLine& line : lines) {
        const auto [entry, isNew] = reads.emplace(line.master, line.reads);
        // Spans of the same length hold the same, but for the transaction at their edge.
        EXPECT_LE(line.reads > entry->second ? line.reads - entry->second : entry->second - line.reads, 1U);
    }
    EXPECT_EQ(reads.size(), 6U);
    EXPECT_EQ(reads.count("3d0"), 1U);
}

TEST_F(AxiCollector, WritesTheHeadingAloneWithoutTheTimer)
{
    Collector collector("idle");
    ASSERT_TRUE(eventually([&] { return !text("idle/axiMonitorData").empty(); }));
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    EXPECT_TRUE(collector.cancel());
    EXPECT_EQ(text("idle/axiMonitorData"), kHeader);
}

TEST_F(AxiCollector, WritesEachSpanOnceAndNoneAfterAClear)
{
    startTimer(1'000'000);
    Collector collector("once");
    ASSERT_TRUE(eventually([&] { return collectedLines("once/axiMonitorData") >= 12; }));
    setReg(kQz202, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    const std::size_t lines = collectedLines("once/axiMonitorData");
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    EXPECT_EQ(collectedLines("once/axiMonitorData"), lines);
    setReg(kQz202, 2);
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    EXPECT_EQ(collectedLines("once/axiMonitorData"), lines);
}

TEST_F(AxiCollector, StaysWithItsCardWhateverIsOpen)
{
    startTimer(1'000'000);
    Collector collector("card");
    ASSERT_TRUE(eventually([&] { return collectedLines("card/axiMonitorData") > 0; }));
    EXPECT_EQ(vekSetCard(0), VEK_OK);
    std::size_t lines = collectedLines("card/axiMonitorData");
    EXPECT_TRUE(eventually([&] { return collectedLines("card/axiMonitorData") > lines; }));
    vekClose();
    lines = collectedLines("card/axiMonitorData");
    EXPECT_TRUE(eventually([&] { return collectedLines("card/axiMonitorData") > lines; }));
    EXPECT_TRUE(collector.cancel());
}

TEST_F(AxiCollector, ReplacesTheFileOfTheSameName)
{
    fs::create_directory(folder.path("again"));
    folder.write("again/axiMonitorData", "something older");
    Collector collector("again");
    ASSERT_TRUE(eventually([&] { return text("again/axiMonitorData") == kHeader; }));
}

TEST_F(AxiCollector, KeepsTheFileThatItWritesWhenAnotherTakesItsPlace)
{
    startTimer(100000);
    Collector first("shared");
    ASSERT_TRUE(eventually([&] { return collectedLines("shared/axiMonitorData") > 0; }));
    const int firstFile = open(folder.path("shared/axiMonitorData").c_str(), O_RDONLY);
    setReg(kQz202, 0);
    setReg(kQz202, 2);
    Collector second("shared");
    ASSERT_TRUE(eventually([&] { return text("shared/axiMonitorData") == kHeader; }));
    struct stat status {
    };
    ASSERT_EQ(fstat(firstFile, &status), 0);
    close(firstFile);
    EXPECT_GT(status.st_size, static_cast<off_t>(std::string(kHeader).size())) << "what was collected is kept";
    EXPECT_EQ(status.st_nlink, 0U) << "under no name";
}

TEST_F(AxiCollector, NeverShowsAnEmptyFile)
{
    for (int round = 0; round < 20; ++round) {
        const std::string name = "round" + std::to_string(round);
        const std::string file = name + "/axiMonitorData";
        Collector collector(name);
        ASSERT_TRUE(eventually([&] { return fs::exists(folder.path(file)); }));
        EXPECT_EQ(text(file), kHeader);
    }
}

TEST_F(AxiCollector, CreatesWithTheUsersUmask)
{
    const mode_t before = umask(0027);
    {
        Collector collector("masked");
        ASSERT_TRUE(eventually([&] { return !text("masked/axiMonitorData").empty(); }));
    }
    umask(before);
    struct stat status {
    };
    ASSERT_EQ(stat(folder.path("masked").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0750U);
    ASSERT_EQ(stat(folder.path("masked/axiMonitorData").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
}

TEST_F(AxiCollector, TakesNamesUpToTheirLongest)
{
    const std::string longest(31, 'n');
    Collector collector(longest);
    EXPECT_TRUE(eventually([&] { return text(longest + "/axiMonitorData") == kHeader; }));
}

TEST_F(AxiCollector, RefusesNamesThatAreNoneOfAFolder)
{
    fs::create_directory(folder.path("inside"));
    fs::current_path(folder.path("inside"));
    EXPECT_EQ(vek_thread_qz202monitor(nullptr), nullptr);
    for (const std::string& name : {std::string(), std::string("."), std::string(".."), std::string("/"),
                                    std::string("../outside"), std::string("a/b"), std::string("inside/"),
                                    folder.path("outside"), std::string(32, 'n'), std::string(5000, 'n')}) {
        EXPECT_EQ(collect(name), nullptr) << name;
    }
    fs::current_path(folder.path(""));
    EXPECT_TRUE(fs::is_empty(folder.path("inside")));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path("")), fs::directory_iterator()), 1);
}

TEST_F(AxiCollector, FollowsNoSymbolicLink)
{
    fs::create_directory(folder.path("elsewhere"));
    fs::create_directory_symlink(folder.path("elsewhere"), folder.path("link"));
    EXPECT_EQ(collect("link"), nullptr);
    EXPECT_TRUE(fs::is_empty(folder.path("elsewhere")));
    const auto target = folder.write("target", "untouched");
    fs::create_directory(folder.path("run"));
    fs::create_symlink(target, folder.path("run/axiMonitorData"));
    EXPECT_EQ(collect("run"), nullptr);
    EXPECT_EQ(text("target"), "untouched");
}

TEST_F(AxiCollector, RefusesWhatIsNoFolderOrNoFile)
{
    folder.write("file", "untouched");
    EXPECT_EQ(collect("file"), nullptr);
    EXPECT_EQ(text("file"), "untouched");
    fs::create_directory(folder.path("fifo"));
    ASSERT_EQ(mkfifo(folder.path("fifo/axiMonitorData").c_str(), 0600), 0);
    EXPECT_EQ(collect("fifo"), nullptr);
}

}  // namespace
