/**
 * @file line_between.h
 * A serial line between a host and a board on pseudo-terminals, which takes its time over each byte and may do some of
 * them harm.
 */
#ifndef LINE_BETWEEN_H
#define LINE_BETWEEN_H

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

#include "memory_line.h"

namespace serial_test
{

/** The line, served by a thread as long as this object lives. */
class LineBetween
{
public:
    /**
     * @param board the terminal of a board
     * @param faults how likely a byte suffers what
     * @param seed another one for other bytes that suffer
     * @param bitsPerSecond how fast bytes follow one another; 0: at once
     */
    LineBetween(const std::string& board, const Faults& faults, std::uint64_t seed, std::uint64_t bitsPerSecond = 0);
    ~LineBetween();
    LineBetween(const LineBetween&) = delete;
    LineBetween& operator=(const LineBetween&) = delete;

    /** The terminal that a host opens, "/dev/pts/3". */
    const std::string& terminal() const { return terminal_; }
    /** What `--tty` takes for it, "pts/3,115200". */
    std::string ttyOption() const;

    /** How many requests hosts have sent so far, those that they have sent again with them. */
    std::uint64_t requests() const { return requests_; }
    /** How many bytes have suffered something. */
    std::uint64_t faults() const { return faults_; }

private:
    struct Direction {
        int from;
        int to;
        Wire wire;
        std::uint64_t free = 0;  ///< When the line is done with the last byte.
    };

    void run();
    void accept(Direction& direction);
    void deliver(Direction& direction) const;
    bool waitForBytes();

    std::string terminal_;
    std::uint64_t byteTime_;
    int host_ = -1;
    int hostsEnd_ = -1;  ///< Kept open, so that the line does not hang up between two hosts.
    int board_ = -1;
    int end_ = -1;
    Direction toBoard_;
    Direction toHost_;
    vek::FrameDecoder decoder_;
    std::atomic<std::uint64_t> requests_ = 0;
    std::atomic<std::uint64_t> faults_ = 0;
    std::thread thread_;
};

}  // namespace serial_test

#endif
