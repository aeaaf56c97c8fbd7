#include "drivers/axi_monitor.h"

#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <string_view>

#include "api/connection.h"
#include "axi_data_file.h"
#include "drivers/axi_data.h"
#include "vek.h"

namespace vek
{
namespace
{

constexpr long kNanosecondsBetweenSamples = 100'000'000;
constexpr int kMostSamples = 10;

/// An AXI monitor with the lock of its card.
struct WatchedMonitor {
    AddressSpace* registers;
    CardLock* lock;
};

/// The AXI monitor of the card that a path leads to, null when it is not that of the chip wanted.
AddressSpace* monitorOf(const AccessPath* path, unsigned deviceId)
{
    return path != nullptr && path->deviceId == deviceId ? path->axiMonitor : nullptr;
}

/// A cancelled thread leaves this function and its caller without their last instructions, those among them that would
/// tell AddressSanitizer that their part of the stack is free; so neither has any that claim it.
[[gnu::no_sanitize_address]] void sleepBetweenSamples()
{
    timespec left{.tv_sec = 0, .tv_nsec = kNanosecondsBetweenSamples};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

bool appendSample(int file, const AxiSample& sample)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    AxiDataText text;
    return appendLines(file, formatAxiSample(sample, now, text));
}

/// Takes a sample while nobody else latches another one.
int takeWholeSample(const WatchedMonitor& monitor, AxiSample& sample)
{
    const CardHold hold(monitor.lock);
    return takeAxiSample(*monitor.registers, sample);
}

/// Appends samples of a run while it goes on, and the last one of a run that is over.
int collectRun(const WatchedMonitor& monitor, int file)
{
    for (int taken = 0; taken < kMostSamples; ++taken) {
        if (taken > 0) {
            sleepBetweenSamples();
        }
        AxiSample sample;
        const int result = takeWholeSample(monitor, sample);
        if (result != VEK_OK) {
            return result;
        }
        if (!appendSample(file, sample)) {
            return VEK_IO_ERROR;
        }
        if (!sample.counting) {
            break;
        }
    }
    return VEK_OK;
}

/// Appends the counts of each span that has ended since the last look, or of the last one if there were several.
/// Returns whether more can be collected.
bool collectSpan(const WatchedMonitor& monitor, int file, std::uint64_t& sequence)
{
    AxiSample sample;
    if (takeWholeSample(monitor, sample) != VEK_OK) {
        return false;
    }
    if (sample.sequence == sequence) {
        return true;
    }
    sequence = sample.sequence;
    return sequence == 0 || appendSample(file, sample);
}

void closeFile(void* descriptor)
{
    close(*static_cast<const int*>(descriptor));
}

/// Collects as long as it can. The thread comes with cancellation disabled; it takes effect between two samples only,
/// so the file holds complete lines then, and what lies on the stack needs no destructors.
[[gnu::no_sanitize_address]] void collectSpans(const WatchedMonitor& monitor, int file, int cancelState)
{
    std::uint64_t sequence = 0;
    while (collectSpan(monitor, file, sequence)) {
        pthread_setcancelstate(cancelState, nullptr);
        sleepBetweenSamples();
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    }
}

/// Collects until the thread is cancelled, with the cancellation state that it had before, and closes the file.
void collectSpansAndClose(const WatchedMonitor& monitor, int file, int cancelState)
{
    pthread_cleanup_push(closeFile, &file);
    collectSpans(monitor, file, cancelState);
    pthread_cleanup_pop(1);
}

}  // namespace
}  // namespace vek

int vekMonitorAxiTrans_QZ201()
{
    if (vek::openPath == nullptr) {
        return VEK_NO_PATH;
    }
    vek::AddressSpace* monitor = vek::monitorOf(vek::openPath, VEK_DEVICE_QZ201);
    if (monitor == nullptr) {
        return VEK_NOT_AVAILABLE;
    }
    const int file = vek::createAxiData(vek::kAxiDataHeader);
    if (file < 0) {
        return VEK_IO_ERROR;
    }
    const int result = vek::collectRun({monitor, vek::openCardLock()}, file);
    return close(file) == 0 ? result : VEK_IO_ERROR;
}

void* vek_thread_qz202monitor(void* folder_name)
{
    int cancelState = PTHREAD_CANCEL_ENABLE;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState);
    const vek::AccessPath* path = vek::openPathFromAnyThread();
    vek::AddressSpace* monitor = vek::monitorOf(path, VEK_DEVICE_QZ202);
    const int file =
        monitor == nullptr ? -1 : vek::createAxiDataIn(static_cast<const char*>(folder_name), vek::kAxiDataHeader);
    if (file >= 0) {
        vek::collectSpansAndClose({monitor, path->lock}, file, cancelState);
    }
    pthread_setcancelstate(cancelState, nullptr);
    return nullptr;
}
