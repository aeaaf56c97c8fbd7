#include "state/kept_buses.h"

#include <algorithm>

#include "vek.h"

namespace vek
{
namespace
{

/// Does a step with the card's lock held. Returns its result, or why it was refused or did not last.
template <typename Step>
int doKept(CardKeeper& keeper, Step step)
{
    const int refusal = keeper.enter();
    const int result = refusal == VEK_OK ? step() : refusal;
    const int kept = keeper.leave();
    return kept == VEK_OK ? result : kept;
}

/// The same for a step on an I2C bus, which is too late when it cannot be done.
template <typename Step>
I2cStep doKeptI2c(CardKeeper& keeper, Step step)
{
    I2cStep done = I2cStep::kTimedOut;
    const int kept = doKept(keeper, [&] {
        done = step();
        return VEK_OK;
    });
    return kept == VEK_OK ? done : I2cStep::kTimedOut;
}

}  // namespace

ReadResult KeptSpace::read(std::uint64_t address, unsigned width)
{
    ReadResult read{VEK_OK, 0};
    read.result = doKept(keeper_, [&] {
        read = space_.read(address, width);
        setPlainMemory(space_.plainMemory());
        return read.result;
    });
    if (keeper_.lost()) {
        withdrawPlainMemory();
    }
    return read;
}

int KeptSpace::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    const int result = doKept(keeper_, [&] {
        const int written = space_.write(address, width, value);
        setPlainMemory(space_.plainMemory());
        return written;
    });
    if (keeper_.lost()) {
        withdrawPlainMemory();
    }
    return result;
}

ReadResult KeptMemory::read(std::uint64_t address, unsigned width)
{
    ReadResult read{VEK_OK, 0};
    read.result = unlessLost([&] {
        read = memory_.read(address, width);
        return read.result;
    });
    return read;
}

int KeptMemory::write(std::uint64_t address, unsigned width, std::uint64_t value)
{
    return unlessLost([&] { return memory_.write(address, width, value); });
}

int KeptMemory::readLongs(std::uint64_t address, std::uint32_t* longs, std::size_t count)
{
    return unlessLost([&] { return memory_.readLongs(address, longs, count); });
}

int KeptMemory::writeLongs(std::uint64_t address, const std::uint32_t* longs, std::size_t count)
{
    return unlessLost([&] { return memory_.writeLongs(address, longs, count); });
}

int KeptMemory::fillLongs(std::uint64_t address, std::uint32_t value, std::size_t count)
{
    return unlessLost([&] { return memory_.fillLongs(address, value, count); });
}

I2cStep KeptI2cBus::start()
{
    return doKeptI2c(keeper_, [&] { return bus_.start(); });
}

I2cStep KeptI2cBus::write(std::uint8_t byte)
{
    return doKeptI2c(keeper_, [&] { return bus_.write(byte); });
}

I2cByte KeptI2cBus::read(bool acknowledge)
{
    I2cByte read{};
    read.step = doKeptI2c(keeper_, [&] {
        read = bus_.read(acknowledge);
        return read.step;
    });
    return read;
}

void KeptI2cBus::stop()
{
    doKept(keeper_, [&] {
        bus_.stop();
        return VEK_OK;
    });
}

I2cStep KeptI2cBus::writeAll(std::span<const std::uint8_t> bytes)
{
    return doKeptI2c(keeper_, [&] { return bus_.writeAll(bytes); });
}

I2cStep KeptI2cBus::readAll(std::span<std::uint8_t> bytes)
{
    return doKeptI2c(keeper_, [&] { return bus_.readAll(bytes); });
}

void KeptSpiBus::select()
{
    doKept(keeper_, [&] {
        bus_.select();
        return VEK_OK;
    });
}

int KeptSpiBus::write(std::span<const std::uint8_t> bytes)
{
    return doKept(keeper_, [&] { return bus_.write(bytes); });
}

int KeptSpiBus::read(std::span<std::uint8_t> bytes)
{
    return doKept(keeper_, [&] { return bus_.read(bytes); });
}

void KeptSpiBus::deselect()
{
    doKept(keeper_, [&] {
        bus_.deselect();
        return VEK_OK;
    });
}

AuxReply KeptAuxChannel::transact(const AuxRequest& request)
{
    AuxReply reply;
    const int kept = doKept(keeper_, [&] {
        reply = channel_.transact(request);
        return VEK_OK;
    });
    return kept == VEK_OK ? reply : AuxReply{.answer = AuxAnswer::kFailed};
}

}  // namespace vek
