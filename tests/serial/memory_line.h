/**
 * @file memory_line.h
 * A serial line in memory between the host's end and something that answers it. Its time is its own: it passes only
 * while the host sends or waits, so nothing here waits in earnest.
 */
#ifndef MEMORY_LINE_H
#define MEMORY_LINE_H

#include <cstdint>
#include <deque>
#include <functional>
#include <random>
#include <span>
#include <vector>

#include "address_space.h"
#include "path/access_path.h"
#include "serial/board_end.h"
#include "serial/serial_port.h"
#include "vek.h"

namespace serial_test
{

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint64_t kMillisecond = 1'000'000;

/** How likely a byte on the line suffers what. */
struct Faults {
    double drop = 0;
    double repeat = 0;
    double flip = 0;
    double delay = 0;
    double insert = 0;
};

/** Bytes under way in one direction, each with the time at which it arrives; none overtakes another. */
class Wire
{
public:
    Wire(const Faults& faults, std::uint64_t seed) : faults_(faults), random_(seed) {}

    /** Sends a byte at a time. */
    void send(std::uint8_t byte, std::uint64_t time);

    bool empty() const { return bytes_.empty(); }
    std::uint64_t nextTime() const { return bytes_.front().time; }
    std::uint8_t take();

    /** How many bytes have suffered something so far. */
    std::uint64_t faultsDone() const { return faultsDone_; }

private:
    struct Arrival {
        std::uint64_t time;
        std::uint8_t byte;
    };

    bool strikes(double rate);
    std::uint64_t pick(std::uint64_t below) { return random_() % below; }

    Faults faults_;
    std::mt19937_64 random_;
    std::deque<Arrival> bytes_;
    std::uint64_t last_ = 0;
    std::uint64_t faultsDone_ = 0;
};

/** The line of a host. The other end is a function that gets each byte and answers with bytes. */
class MemoryLine : public vek::SerialPort
{
public:
    using OtherEnd = std::function<Bytes(std::uint8_t)>;

    explicit MemoryLine(OtherEnd otherEnd, const Faults& faults = {}, std::uint64_t seed = 1)
        : otherEnd_(std::move(otherEnd)), toBoard_(faults, seed), toHost_(faults, seed + 1)
    {
    }

    std::uint64_t now() override { return time_; }
    int send(std::span<const std::uint8_t> bytes, std::uint64_t deadline) override;
    std::ptrdiff_t receive(std::span<std::uint8_t> bytes, std::uint64_t deadline) override;

    void pass(std::uint64_t nanoseconds) { time_ += nanoseconds; }
    /** From now on the line is gone, as when its adapter is pulled out. */
    void cut() { cut_ = true; }
    std::size_t sentBytes() const { return sentBytes_; }
    std::size_t receivedBytes() const { return receivedBytes_; }

private:
    void deliver(std::uint64_t until);

    OtherEnd otherEnd_;
    Wire toBoard_;
    Wire toHost_;
    std::uint64_t time_ = 0;
    std::size_t sentBytes_ = 0;
    std::size_t receivedBytes_ = 0;
    bool cut_ = false;
};

/** A board's end over a card. */
class Board final : public vek::ReplySink
{
public:
    explicit Board(const vek::AccessPath& card) : end_(card, *this) {}

    void send(std::span<const std::uint8_t> frame) override { sent_.insert(sent_.end(), frame.begin(), frame.end()); }

    /** What it answers to bytes. */
    Bytes take(std::span<const std::uint8_t> bytes);
    /** What it answers to a message, frame by frame, without the frames. */
    std::vector<Bytes> ask(const Bytes& message);

    vek::BoardEnd& end() { return end_; }
    MemoryLine::OtherEnd line()
    {
        return [this](std::uint8_t byte) { return take({&byte, 1}); };
    }

private:
    vek::BoardEnd end_;
    Bytes sent_;
};

/** The messages of the frames in a run of bytes. */
std::vector<Bytes> messagesIn(const Bytes& bytes);

/** A message in its frame. */
Bytes framed(const Bytes& message);

/** A path on which nothing is. */
vek::AccessPath emptyPath();

}  // namespace serial_test

#endif
