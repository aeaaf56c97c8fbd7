// Every access to mapped memory as the processor makes it: one for each item, of exactly its width and at its address.
// Registers may lie behind the window, which do something when they are read or written.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "scratch_folder.h"
#include "vek.h"

#if defined(__x86_64__)

namespace
{

constexpr std::size_t kPage = 4096;
constexpr std::size_t kPages = 3;

/** Memory of which every access is noted: nothing may be done to it until the processor has told. */
struct Watched {
    std::uintptr_t base = 0;
    std::array<std::uintptr_t, 64> accesses{};
    std::size_t count = 0;
};

Watched watched;

void protect(std::uintptr_t address, std::size_t size, int rights)
{
    mprotect(reinterpret_cast<void*>(address), size, rights);
}

/** Notes an access, lets it reach the one page that it has asked for, and stops behind its instruction. */
void onAccess(int /*signal*/, siginfo_t* info, void* context)
{
    constexpr long long kTrapFlag = 0x100;
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    if (address - watched.base >= kPages * kPage) {
        _exit(3);
    }
    if (watched.count < watched.accesses.size()) {
        watched.accesses[watched.count] = address - watched.base;
    }
    ++watched.count;
    protect(address / kPage * kPage, kPage, PROT_READ | PROT_WRITE);
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EFL] |= kTrapFlag;
}

void onTrap(int /*signal*/, siginfo_t* /*info*/, void* context)
{
    constexpr long long kTrapFlag = 0x100;
    protect(watched.base, kPages * kPage, PROT_NONE);
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EFL] &= ~kTrapFlag;
}

/** Where a file is mapped in this process. */
std::uintptr_t mappingOf(const std::string& name)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.size() >= name.size() && line.compare(line.size() - name.size(), name.size(), name) == 0) {
            return std::strtoull(line.c_str(), nullptr, 16);
        }
    }
    return 0;
}

class MemAccess : public testing::Test
{
protected:
    MemAccess()
    {
        std::ofstream(name_, std::ios::binary);
        std::filesystem::resize_file(name_, kPages * kPage);
        setenv("VEK_MEM_DEVICE", name_.c_str(), 1);
        take(SIGSEGV, onAccess, beforeAccess_);
        take(SIGTRAP, onTrap, beforeTrap_);
    }

    ~MemAccess() override
    {
        vekClose();
        unsetenv("VEK_MEM_DEVICE");
        sigaction(SIGSEGV, &beforeAccess_, nullptr);
        sigaction(SIGTRAP, &beforeTrap_, nullptr);
    }

    MemAccess(const MemAccess&) = delete;
    MemAccess& operator=(const MemAccess&) = delete;

    /** The addresses of the accesses that a function makes. */
    template <typename Function>
    std::vector<std::uintptr_t> accessesOf(Function function)
    {
        watched.base = mappingOf(name_);
        watched.count = 0;
        protect(watched.base, kPages * kPage, PROT_NONE);
        const int result = function();
        protect(watched.base, kPages * kPage, PROT_READ | PROT_WRITE);
        EXPECT_EQ(result, VEK_OK);
        EXPECT_LE(watched.count, watched.accesses.size());
        const auto noted = static_cast<std::ptrdiff_t>(std::min(watched.count, watched.accesses.size()));
        return {watched.accesses.begin(), watched.accesses.begin() + noted};
    }

    template <typename Item>
    void expectOneAccess(int (*read)(std::uint64_t, Item*), int (*write)(std::uint64_t, Item))
    {
        // Next to the ends of a page, anything wider reaches over into another one, or begins elsewhere.
        for (const std::uintptr_t address : {kPage, 2 * kPage - sizeof(Item)}) {
            Item item = 0;
            EXPECT_EQ(accessesOf([&] { return write(address, static_cast<Item>(0x1122'3344'5566'7788)); }),
                      std::vector{address});
            EXPECT_EQ(accessesOf([&] { return read(address, &item); }), std::vector{address});
            EXPECT_EQ(item, static_cast<Item>(0x1122'3344'5566'7788));
        }
    }

    ScratchFolder folder_;
    std::string name_ = folder_.path("physical_memory");

private:
    static void take(int signal, void (*handler)(int, siginfo_t*, void*), struct sigaction& before)
    {
        struct sigaction wanted = {};
        wanted.sa_sigaction = handler;
        wanted.sa_flags = SA_SIGINFO;
        sigaction(signal, &wanted, &before);
    }

    struct sigaction beforeAccess_ = {};
    struct sigaction beforeTrap_ = {};
};

TEST_F(MemAccess, IsOneOfItsWidthForEachRegister)
{
    ASSERT_GT(vekMemOpen(0, kPages * kPage, 0, 0), 0);
    expectOneAccess(vekRegReadByte, vekRegWriteByte);
    expectOneAccess(vekRegReadWord, vekRegWriteWord);
    expectOneAccess(vekRegReadLong, vekRegWriteLong);
    expectOneAccess(vekRegReadQuad, vekRegWriteQuad);
}

TEST_F(MemAccess, IsOneOfItsWidthForEachItemOfVideoMemory)
{
    ASSERT_GT(vekMemOpen(0, 0, 0, kPages * kPage), 0);
    expectOneAccess(vekVramReadByte, vekVramWriteByte);
    expectOneAccess(vekVramReadWord, vekVramWriteWord);
    expectOneAccess(vekVramReadLong, vekVramWriteLong);
    expectOneAccess(vekVramReadQuad, vekVramWriteQuad);
}

TEST_F(MemAccess, IsOneForEachLongOfARun)
{
    constexpr std::size_t kLongs = 16;
    ASSERT_GT(vekMemOpen(0, 0, 0, kPages * kPage), 0);
    const std::uintptr_t start = 2 * kPage - kLongs / 2 * sizeof(std::uint32_t);
    std::vector<std::uintptr_t> expected;
    for (std::size_t index = 0; index < kLongs; ++index) {
        expected.push_back(start + index * sizeof(std::uint32_t));
    }
    std::array<std::uint32_t, kLongs> longs{};
    EXPECT_EQ(accessesOf([&] { return vekMultVramWriteLong(0x55, start, kLongs, nullptr); }), expected);
    EXPECT_EQ(accessesOf([&] { return vekMultiVramReadLong(longs.data(), start, kLongs, nullptr); }), expected);
    EXPECT_EQ(longs.back(), 0x55U);
}

}  // namespace

#endif
