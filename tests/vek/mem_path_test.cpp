#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "child_process.h"
#include "scratch_folder.h"
#include "vek.h"

namespace
{

// A file in the place of physical memory: a register window and a video memory window, neither on a page of its own.
constexpr uint64_t kRegisters = 0x1230;
constexpr uint64_t kRegistersSize = 0x40'0010;
constexpr uint64_t kVideoMemory = 0x50'0004;
constexpr uint64_t kVideoMemorySize = 0x2003;
constexpr uint64_t kFileSize = 0x60'0000;

class MemPath : public testing::Test
{
protected:
    MemPath()
    {
        std::ofstream(name, std::ios::binary);
        std::filesystem::resize_file(name, kFileSize);
        setenv("VEK_MEM_DEVICE", name.c_str(), 1);
    }

    ~MemPath() override
    {
        vekClose();
        unsetenv("VEK_MEM_DEVICE");
    }

    MemPath(const MemPath&) = delete;
    MemPath& operator=(const MemPath&) = delete;

    static int openBoth() { return vekMemOpen(kRegisters, kRegistersSize, kVideoMemory, kVideoMemorySize); }

    template <typename Item>
    Item inFile(uint64_t address) const
    {
        Item item = 0;
        std::ifstream file(name, std::ios::binary);
        file.seekg(static_cast<std::streamoff>(address));
        file.read(reinterpret_cast<char*>(&item), sizeof item);
        return item;
    }

    ScratchFolder folder;
    std::string name = folder.path("physical_memory");
};

TEST_F(MemPath, OpensWithAResultThatIsNotZero)
{
    EXPECT_GT(openBoth(), 0);
    EXPECT_EQ(get_s_type(), VEK_ACCESS_MEM);
    EXPECT_EQ(vekClose(), VEK_OK);
    EXPECT_EQ(get_s_type(), VEK_NO_PATH);
}

TEST_F(MemPath, TheChipIsTheOneThatIsAssumed)
{
    ASSERT_EQ(doGetDeviceId("test", "QZ202"), VEK_OK);
    ASSERT_GT(openBoth(), 0);
    EXPECT_EQ(get_device_id(), 0x202U);
}

TEST_F(MemPath, ItemsOfEveryWidthLieAtTheirPhysicalAddress)
{
    ASSERT_GT(openBoth(), 0);
    for (uint64_t offset = 0; offset < 9; ++offset) {
        EXPECT_EQ(vekRegWriteByte(offset, 0x5a), VEK_OK);
        EXPECT_EQ(inFile<uint8_t>(kRegisters + offset), 0x5a);
        EXPECT_EQ(vekRegWriteWord(offset, 0xbeef), VEK_OK);
        EXPECT_EQ(inFile<uint16_t>(kRegisters + offset), 0xbeef);
        EXPECT_EQ(vekRegWriteLong(offset, 0xdeadbeef), VEK_OK);
        EXPECT_EQ(inFile<uint32_t>(kRegisters + offset), 0xdeadbeef);
        EXPECT_EQ(vekVramWriteQuad(offset, 0x1122334455667788), VEK_OK);
        EXPECT_EQ(inFile<uint64_t>(kVideoMemory + offset), 0x1122334455667788);
    }
    uint8_t byte = 0;
    uint16_t word = 0;
    uint32_t value = 0;
    uint64_t quad = 0;
    EXPECT_EQ(vekRegReadLong(8, &value), VEK_OK);
    EXPECT_EQ(value, 0xdeadbeef);
    EXPECT_EQ(vekVramReadQuad(8, &quad), VEK_OK);
    EXPECT_EQ(quad, 0x1122334455667788);
    EXPECT_EQ(vekVramReadByte(9, &byte), VEK_OK);
    EXPECT_EQ(byte, 0x77);
    EXPECT_EQ(vekVramReadWord(9, &word), VEK_OK);
    EXPECT_EQ(word, 0x6677);
}

TEST_F(MemPath, WindowsEndExactly)
{
    ASSERT_GT(openBoth(), 0);
    uint32_t value = 0;
    EXPECT_EQ(vekRegReadLong(kRegistersSize - 4, &value), VEK_OK);
    EXPECT_EQ(vekVramWriteByte(kVideoMemorySize - 1, 1), VEK_OK);
    EXPECT_EQ(vekRegReadLong(kRegistersSize - 3, &value), VEK_NO_RESPONSE);
    EXPECT_EQ(value, 0xffffffff);
    EXPECT_EQ(vekRegWriteLong(kRegistersSize - 3, 1), VEK_NO_RESPONSE);
    EXPECT_EQ(vekVramWriteByte(kVideoMemorySize, 1), VEK_NO_RESPONSE);
    EXPECT_EQ(vekVramWriteQuad(~uint64_t{0}, 1), VEK_NO_RESPONSE);
    EXPECT_EQ(inFile<uint32_t>(kRegisters + kRegistersSize - 3), 0U);
}

TEST_F(MemPath, AWindowMayBeSmallerThanAnItem)
{
    ASSERT_GT(vekMemOpen(kRegisters, 1, 0, 0), 0);
    EXPECT_EQ(vekRegWriteByte(0, 7), VEK_OK);
    EXPECT_EQ(vekRegWriteLong(0, 7), VEK_NO_RESPONSE);
    EXPECT_EQ(inFile<uint32_t>(kRegisters), 7U);
}

TEST_F(MemPath, EitherWindowMayBeLeftOut)
{
    uint8_t byte = 0;
    ASSERT_GT(vekMemOpen(kRegisters, kRegistersSize, kVideoMemory, 0), 0);
    EXPECT_EQ(vekRegReadByte(0, &byte), VEK_OK);
    EXPECT_EQ(vekVramReadByte(0, &byte), VEK_NOT_AVAILABLE);
    ASSERT_GT(vekMemOpen(kRegisters, 0, kVideoMemory, kVideoMemorySize), 0);
    EXPECT_EQ(vekRegReadByte(0, &byte), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekVramReadByte(0, &byte), VEK_OK);
    EXPECT_EQ(vekMemOpen(kRegisters, 0, kVideoMemory, 0), VEK_BAD_ARGUMENT);
    EXPECT_EQ(get_s_type(), VEK_ACCESS_MEM);
}

TEST_F(MemPath, BlocksGoThroughTheWindow)
{
    ASSERT_GT(openBoth(), 0);
    EXPECT_EQ(vekMultVramWriteLong(0x01020304, 1, 3, nullptr), VEK_OK);
    EXPECT_EQ(inFile<uint64_t>(kVideoMemory + 1), 0x0102030401020304U);
    EXPECT_EQ(inFile<uint64_t>(kVideoMemory + 9), 0x01020304U);
    std::array<uint32_t, 4> longs{};
    EXPECT_EQ(vekMultiVramReadLong(longs.data(), 1, 4, nullptr), VEK_OK);
    EXPECT_EQ(longs, (std::array<uint32_t, 4>{0x01020304, 0x01020304, 0x01020304, 0}));
    EXPECT_EQ(vekMultiVramReadLong(longs.data(), kVideoMemorySize - 7, 4, nullptr), VEK_NO_RESPONSE);
    EXPECT_EQ(longs, (std::array<uint32_t, 4>{0, 0xffffffff, 0xffffffff, 0xffffffff}));
    EXPECT_EQ(vekMultVramWriteLong(1, kVideoMemorySize, 1, nullptr), VEK_NO_RESPONSE);
}

TEST_F(MemPath, RefusesWhatCannotBeMapped)
{
    ASSERT_GT(openBoth(), 0);
    EXPECT_EQ(vekRegWriteByte(0, 0x42), VEK_OK);
    EXPECT_EQ(vekMemOpen(~uint64_t{0}, 2, 0, 0), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekMemOpen(1, ~uint64_t{0}, 0, 0), VEK_BAD_ARGUMENT);
    EXPECT_EQ(vekMemOpen(0, kFileSize + 1, 0, 0), VEK_NO_RESPONSE);
    EXPECT_EQ(vekMemOpen(kRegisters, 16, kFileSize - 1, 2), VEK_NO_RESPONSE);
    setenv("VEK_MEM_DEVICE", folder.path("absent").c_str(), 1);
    EXPECT_EQ(vekMemOpen(kRegisters, 16, 0, 0), VEK_IO_ERROR);
    setenv("VEK_MEM_DEVICE", folder.path(".").c_str(), 1);
    EXPECT_EQ(vekMemOpen(kRegisters, 16, 0, 0), VEK_IO_ERROR);
    // What was open is still open.
    uint8_t byte = 0;
    EXPECT_EQ(vekRegReadByte(0, &byte), VEK_OK);
    EXPECT_EQ(byte, 0x42);
}

TEST_F(MemPath, HasNothingBesidesItsWindows)
{
    ASSERT_GT(openBoth(), 0);
    uint8_t byte = 0xa5;
    uint32_t value = 0xa5;
    double reading = 1;
    std::array<char, VEK_QUERY_REPORT_SIZE> report{};
    VekDisplayMode mode{};
    EXPECT_EQ(vekAmbaReadByte(0x1000000, &byte), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekKmemReadByte(0, &byte), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekCrtcReadByte(0, &byte), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekPciRead(0, &value), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekI2cRead(0, 0x50, 0, 1, &byte), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekDpAuxRead(0, 0, &byte), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekHdmiModeRead(0, &mode), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekCrtcModeRead(0, &mode), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekSpiReadBuffer(&byte, 0, 1), VEK_NOT_AVAILABLE);
    EXPECT_EQ(vekSensorTemp(0, &reading), VEK_NOT_AVAILABLE);
    EXPECT_LT(vek_qz200_get_freq(VEK_CLOCK_AXI), 0);
    EXPECT_LT(vekQueryInfo("", report.data()), 0);
    EXPECT_EQ(byte, 0xa5);
}

/** A card that is unplugged, or a file that is cut short, takes the pages away. */
TEST_F(MemPath, AnswersNothingOnceAPartIsGone)
{
    const auto result = child_process::runForked([&] {
        uint8_t byte = 0;
        std::array<uint32_t, 4> longs{};
        if (openBoth() <= 0 || vekRegReadByte(0, &byte) != VEK_OK || vekVramWriteLong(0, 1) != VEK_OK) {
            _exit(1);
        }
        std::filesystem::resize_file(name, kVideoMemory / 0x1000 * 0x1000);
        const bool registersStay = vekRegReadByte(0, &byte) == VEK_OK;
        if (!registersStay || vekVramWriteLong(0, 2) != VEK_NO_RESPONSE || vekVramReadByte(0x1000, &byte) >= 0 ||
            vekMultiVramReadLong(longs.data(), 0, 4, nullptr) >= 0 || vekMultVramWriteLong(5, 0, 4, nullptr) >= 0) {
            _exit(2);
        }
        std::filesystem::resize_file(name, 0);
        const bool gone =
            vekRegReadByte(kRegistersSize - 1, &byte) < 0 && vekRegReadByte(0, &byte) < 0 && vekRegWriteQuad(0, 1) < 0;
        std::filesystem::resize_file(name, kFileSize);
        const bool back = vekClose() == VEK_OK && openBoth() > 0 && vekRegWriteByte(0, 9) == VEK_OK &&
                          vekVramReadByte(0, &byte) == VEK_OK;
        _exit(gone && back ? 0 : 3);
    });
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error,
              "mapped video memory: cannot be reached any more\nmapped registers: cannot be reached any more\n");
    EXPECT_EQ(inFile<uint8_t>(kRegisters), 9);
}

/** What is mapped by --mem and what a card keeps is watched side by side, and each only as long as it is mapped. */
TEST_F(MemPath, LeavesTheFaultsOfOthersToThemOnceItIsClosed)
{
    const std::string state = folder.path("state");
    const auto result = child_process::runForked([&] {
        std::signal(SIGBUS, [](int) { _exit(42); });
        setenv("VEK_STATE_FOLDER", state.c_str(), 1);
        if (openBoth() <= 0 || vekRwOpen(0) != VEK_OK) {
            _exit(1);
        }
        // The next mapping of the size of the registers' gets their pages.
        constexpr uint64_t kMapped = 0x40'2000;
        const int file = open(name.c_str(), O_RDWR | O_CLOEXEC);
        auto* const bytes =
            static_cast<volatile char*>(mmap(nullptr, kMapped, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
        std::filesystem::resize_file(name, 0);
        for (uint64_t at = 0; at < kMapped; at += 0x1000) {
            bytes[at] = 1;
        }
        _exit(2);
    });
    EXPECT_EQ(result.exitStatus, 42);
    EXPECT_EQ(result.error, "");
}

TEST_F(MemPath, OpeningTheDriverEndsTheMapping)
{
    ASSERT_GT(openBoth(), 0);
    EXPECT_EQ(vekRegWriteByte(0x7f0, 0x42), VEK_OK);
    ASSERT_GE(vekRwOpen(0), 0);
    EXPECT_EQ(get_s_type(), VEK_ACCESS_DRIVER);
    uint8_t byte = 1;
    EXPECT_EQ(vekRegReadByte(0x7f0, &byte), VEK_OK);
    EXPECT_EQ(byte, 0);
}

}  // namespace
