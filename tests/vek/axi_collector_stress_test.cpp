#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>

#include "axi_data_lines.h"
#include "vek.h"
#include "working_folder.h"

namespace
{

constexpr uint64_t kControl = 0x288800;
constexpr uint64_t kCycle = 0x288808;
constexpr uint32_t kStartTimer = 0x14;

/** How long a collector is left alone: mostly hardly until it has begun, now and then for a few samples. */
std::chrono::microseconds randomDelay(std::mt19937& random)
{
    const unsigned most = random() % 20 == 0 ? 350'000 : 2'000;
    return std::chrono::microseconds(random() % most);
}

/** What the console may do meanwhile. */
void disturb(std::mt19937& random)
{
    uint64_t reads = 0;
    switch (random() % 5) {
        case 0:
            vekRegWriteLong(kCycle, 10'000);
            vekRegWriteLong(kControl, kStartTimer);
            break;
        case 1:
            vekRegReadQuad(kControl + 0x100, &reads);
            break;
        case 2:
            vek_qz200_set_clk_mode(VEK_CLOCK_BYPASS, VEK_CLOCK_SOURCE_3DCORE);
            vek_qz200_set_clk_mode(VEK_CLOCK_ON, VEK_CLOCK_SOURCE_3DCORE);
            break;
        case 3:
            vekSetCard(0);
            break;
        default:
            vekClose();
            break;
    }
}

std::string textOf(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(AxiCollectorStress, LeavesCompleteLinesWheneverItIsCancelled)
{
    const WorkingFolder folder;
    std::mt19937 random(COLLECTOR_STARTS);
    std::size_t lines = 0;
    char name[] = "run";
    for (int start = 0; start < COLLECTOR_STARTS; ++start) {
        ASSERT_GE(vekRwOpen(1), 0);
        vekRegWriteLong(kCycle, 10'000);
        vekRegWriteLong(kControl, kStartTimer);
        pthread_t collector{};
        ASSERT_EQ(pthread_create(&collector, nullptr, vek_thread_qz202monitor, name), 0);
        std::this_thread::sleep_for(randomDelay(random));
        disturb(random);
        std::this_thread::sleep_for(randomDelay(random));
        ASSERT_EQ(pthread_cancel(collector), 0);
        ASSERT_EQ(pthread_join(collector, nullptr), 0);
        const std::size_t found = axiDataLines(textOf("run/axiMonitorData")).size();
        ASSERT_EQ(found % 6, 0U) << "samples are written whole";
        lines += found;
    }
    EXPECT_GT(lines, 0U);
    vekClose();
}

}  // namespace
