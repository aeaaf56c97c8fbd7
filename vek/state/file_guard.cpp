#include "state/file_guard.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vek
{
namespace
{

constexpr std::size_t kMostMappings = 256;

struct GuardedMapping {
    unsigned char* base;              ///< Begins a page.
    std::atomic<std::size_t> length;  ///< 0 when it is watched no more.
    const char* name;
    FileLoss* loss;
};

// What the handler reads: of the entries below the count nothing changes but the length.
constinit std::array<GuardedMapping, kMostMappings> mappings{};
constinit std::atomic<std::size_t> mappingCount = 0;
constinit struct sigaction previousAction = {};
constinit std::size_t pageSize = 0;

std::size_t offsetIn(const GuardedMapping& mapping, std::uintptr_t address)
{
    return address - reinterpret_cast<std::uintptr_t>(mapping.base);
}

const GuardedMapping* mappingAt(std::uintptr_t address)
{
    const std::size_t count = mappingCount.load(std::memory_order_acquire);
    for (std::size_t index = 0; index < count; ++index) {
        if (offsetIn(mappings[index], address) < mappings[index].length) {
            return &mappings[index];
        }
    }
    return nullptr;
}

/// A message put together by functions that a signal handler may call. What does not fit is left out.
class Line
{
public:
    Line& operator<<(std::string_view text)
    {
        const std::size_t count = std::min(text.size(), text_.size() - length_);
        std::memcpy(text_.data() + length_, text.data(), count);
        length_ += count;
        return *this;
    }

    void print() const
    {
        // There is nobody to tell that standard error does not take it.
        static_cast<void>(!write(STDERR_FILENO, text_.data(), length_));
    }

private:
    std::array<char, 1024> text_;
    std::size_t length_ = 0;
};

void noteLoss(const GuardedMapping& mapping)
{
    FileLoss& loss = *mapping.loss;
    if (loss.lost.exchange(true)) {
        return;
    }
    for (AddressSpace* space : loss.exposing) {
        if (space != nullptr) {
            space->withdrawPlainMemory();
        }
    }
    Line line;
    line << loss.folder;
    if (mapping.name != nullptr) {
        line << "/" << mapping.name;
    }
    line << ": " << loss.consequence << "\n";
    line.print();
}

bool replacePage(const GuardedMapping& mapping, std::uintptr_t address)
{
    unsigned char* const page = mapping.base + offsetIn(mapping, address) / pageSize * pageSize;
    return mmap(page, pageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED;
}

/// Lets act what was there before.
void passOn(int signal, siginfo_t* info, void* context)
{
    if ((previousAction.sa_flags & SA_SIGINFO) != 0) {
        previousAction.sa_sigaction(signal, info, context);
        return;
    }
    if (previousAction.sa_handler != SIG_DFL && previousAction.sa_handler != SIG_IGN) {
        previousAction.sa_handler(signal);
        return;
    }
    // A fault happens once more when this returns; a signal that was sent has to be sent again.
    const bool sent = info->si_code <= 0;
    if (sent && previousAction.sa_handler == SIG_IGN) {
        return;
    }
    sigaction(SIGBUS, &previousAction, nullptr);
    if (sent) {
        raise(signal);
    }
}

void onBusError(int signal, siginfo_t* info, void* context)
{
    const int error = errno;
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    const GuardedMapping* mapping = info->si_code > 0 ? mappingAt(address) : nullptr;
    if (mapping != nullptr && replacePage(*mapping, address)) {
        noteLoss(*mapping);
    } else {
        passOn(signal, info, context);
    }
    errno = error;
}

bool installHandler()
{
    pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    struct sigaction action = {};
    action.sa_sigaction = onBusError;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    return sigaction(SIGBUS, &action, &previousAction) == 0;
}

}  // namespace

bool guardMapping(unsigned char* base, std::size_t length, const char* name, FileLoss& loss)
{
    const std::size_t count = mappingCount.load(std::memory_order_relaxed);
    if (count == mappings.size() || (pageSize == 0 && !installHandler())) {
        return false;
    }
    GuardedMapping& mapping = mappings[count];
    mapping.base = base;
    mapping.length.store(length, std::memory_order_relaxed);
    mapping.name = name;
    mapping.loss = &loss;
    mappingCount.store(count + 1, std::memory_order_release);
    return true;
}

void forgetMappings(const FileLoss& loss)
{
    std::size_t count = mappingCount.load(std::memory_order_relaxed);
    for (std::size_t index = 0; index < count; ++index) {
        if (mappings[index].loss == &loss) {
            mappings[index].length = 0;
        }
    }
    while (count > 0 && mappings[count - 1].length == 0) {
        --count;
    }
    mappingCount.store(count, std::memory_order_release);
}

}  // namespace vek
