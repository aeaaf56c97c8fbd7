// The counters of AXI transactions: start, final, clear and the length of the counting span.

#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include "tovira_parse/handlers.h"
#include "tovira_parse/heap.h"
#include "tovira_parse/terminal.h"
#include "tovira_parse/text.h"
#include "tovira_parse/wait.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

// Registers of the monitor, as offsets in the register region, and what is written to them.
constexpr std::uint32_t kControlQz201 = 0x309000;
constexpr std::uint32_t kStartQz201 = 1;
constexpr std::uint32_t kFinalQz201 = 2;
constexpr std::uint32_t kClearQz201 = 4;

constexpr std::uint32_t kControlQz202 = 0x288800;
constexpr std::uint32_t kFinalQz202 = 1;
constexpr std::uint32_t kClearQz202 = 2;
constexpr std::uint32_t kStopTimerQz202 = 0;
constexpr std::uint32_t kStartTimerQz202 = 0x14;
constexpr std::uint32_t kCycleQz202 = 0x288808;

// Over a serial line registers go by their addresses on the AMBA bus.
constexpr std::uint32_t kRegistersOnAmba = 0x1000000;

constexpr char kEndKey = 'd';
constexpr std::uint32_t kMomentMicroseconds = 20'000;

// The monitor of the card at hand.
struct AxiMonitor {
    std::uint32_t base;  ///< where the open path has the register region
    unsigned deviceId;

    void write(std::uint32_t offset, std::uint32_t value) const { vekRegWriteLong(base + offset, value); }
};

void writeControl(const AxiMonitor& monitor, std::uint32_t valueQz201, std::uint32_t valueQz202)
{
    if (monitor.deviceId == VEK_DEVICE_QZ201) {
        monitor.write(kControlQz201, valueQz201);
    } else if (monitor.deviceId == VEK_DEVICE_QZ202) {
        monitor.write(kControlQz202, valueQz202);
    }
}

int startQz201(const AxiMonitor& monitor)
{
    monitor.write(kControlQz201, kStartQz201);
    printf("0x%x Monitor the axi trans start, please check the axiMonitorData file\n", VEK_DEVICE_QZ201);
    flushTerminalOutput();
    vekMonitorAxiTrans_QZ201();
    return kStatusDone;
}

// Hour, minute and second one behind the other, without leading zeros; null when out of memory.
HeapPointer<char> makeFolderName()
{
    constexpr std::size_t kLongestName = 31;
    HeapPointer<char> name(static_cast<char*>(malloc(kLongestName + 1)));
    if (name != nullptr) {
        const time_t now = time(nullptr);
        tm local = {};
        localtime_r(&now, &local);
        snprintf(name.get(), kLongestName + 1, "%d%d%d", local.tm_hour, local.tm_min, local.tm_sec);
    }
    return name;
}

// Posted when the collector is about to call the library.
sem_t collectorHasBegun;

// The collector ends some time after it is cancelled and nobody waits for it, so its name goes with it.
void* collectWithOwnName(void* name)
{
    void* result = nullptr;
    pthread_cleanup_push(free, name);
    sem_post(&collectorHasBegun);
    result = vek_thread_qz202monitor(name);
    pthread_cleanup_pop(1);
    return result;
}

// The C library looks for the unwinder when a thread is cancelled, and ends the program when it has none.
bool canCancelThreads()
{
    return dlopen("libgcc_s.so.1", RTLD_NOW) != nullptr;
}

// Returns when the collector has begun: a key that was typed ahead would else cancel it before it has called the
// library.
bool createCollector(pthread_t& collector, char* name)
{
    if (!canCancelThreads()) {
        return false;
    }
    sem_init(&collectorHasBegun, 0, 0);
    const sigset_t before = holdBackSignals();
    const bool created = pthread_create(&collector, nullptr, collectWithOwnName, name) == 0;
    releaseSignals(before);
    if (created) {
        while (sem_wait(&collectorHasBegun) != 0 && errno == EINTR) {
        }
        waitMicroseconds(kMomentMicroseconds);
    }
    return created;
}

void waitForEndKey()
{
    // Without keys to come there is nothing to wait for.
    int key = my_getch();
    while (key != kEndKey && (key >= 0 || key == kKeyAfterStop)) {
        if (key != kKeyAfterStop) {
            puts("please input 'd' to done the thread");
        }
        key = my_getch();
    }
}

int startQz202()
{
    HeapPointer<char> name = makeFolderName();
    pthread_t collector = {};
    if (name != nullptr) {
        printf("time_foldername: %s\n", name.get());
    }
    if (name == nullptr || !createCollector(collector, name.get())) {
        puts("thread creation failed");
        return kStatusBadCommand;
    }
    static_cast<void>(name.release());
    waitForEndKey();
    pthread_cancel(collector);
    pthread_detach(collector);
    printf("0x%x Monitor the axi trans is collected, please check the axiMonitorData file\n", VEK_DEVICE_QZ202);
    return kStatusDone;
}

int start(const AxiMonitor& monitor)
{
    if (monitor.deviceId == VEK_DEVICE_QZ201) {
        return startQz201(monitor);
    }
    return monitor.deviceId == VEK_DEVICE_QZ202 ? startQz202() : kStatusDone;
}

// What is typed behind the number would be taken for the next command. A line that was typed ahead, when the terminal
// was raw, ends with a carriage return.
void dropRestOfTypedLine()
{
    if (isatty(STDIN_FILENO) == 0) {
        return;
    }
    for (int character = readKey(); character != '\n' && character != '\r' && character != EOF;) {
        character = readKey();
    }
}

std::uint32_t readCycle()
{
    unsigned cycle = 0;
    int taken = 0;
    do {
        clearerr(stdin);
        // The C library cuts a number that is too long to its low 32 bits: NOLINTNEXTLINE(cert-err34-c)
        taken = scanf("%x", &cycle);
    } while (taken == EOF && readIsToBeRepeated());
    if (taken != 1) {
        cycle = 0;
    }
    dropRestOfTypedLine();
    clearerr(stdin);
    return cycle;
}

int setCycle(const AxiMonitor& monitor)
{
    puts("Please input AXI clock cycle");
    flushTerminalOutput();
    const std::uint32_t cycle = readCycle();
    if (cycle == 0) {
        monitor.write(kControlQz202, kStopTimerQz202);
        monitor.write(kCycleQz202, 0);
    } else {
        monitor.write(kCycleQz202, cycle);
        monitor.write(kControlQz202, kStartTimerQz202);
    }
    printf("time: %d\n", static_cast<std::int32_t>(cycle));
    return kStatusDone;
}

}  // namespace

int doMonitor(char* cmdText, int /*repeat*/)
{
    const std::uint32_t base = get_s_type() == VEK_ACCESS_SERIAL ? kRegistersOnAmba : 0;
    Tokens tokens{cmdText};
    tokens.word();
    char* const token = tokens.word();
    if (token == nullptr) {
        return kStatusBadArgument;
    }
    upperCase(token);
    const std::string_view subCommand = token;
    const AxiMonitor monitor = {.base = base, .deviceId = get_device_id()};
    if (subCommand == "START" || subCommand == "S") {
        return start(monitor);
    }
    if (subCommand == "FINAL" || subCommand == "F") {
        writeControl(monitor, kFinalQz201, kFinalQz202);
        puts("Monitor the axi trans final!");
        return kStatusDone;
    }
    if (subCommand == "CLEAR" || subCommand == "C") {
        writeControl(monitor, kClearQz201, kClearQz202);
        puts("Monitor the axi trans is cleaned!");
        return kStatusDone;
    }
    return subCommand == "CYCLE" || subCommand == "T" ? setCycle(monitor) : kStatusBadArgument;
}
