#ifndef VEK_SERIAL_SERIAL_SESSION_H
#define VEK_SERIAL_SERIAL_SESSION_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "serial/board_services.h"
#include "serial/frame.h"
#include "serial/message.h"
#include "serial/serial_port.h"

namespace vek
{

/// A request of the host, whose numbers are filled in when it is sent.
class SerialRequest : public MessageWriter
{
public:
    /// `dataExpected` is the number of bytes that the reply may have behind its status.
    explicit SerialRequest(serial_protocol::Operation operation, std::size_t dataExpected = 0)
        : MessageWriter(static_cast<std::uint8_t>(operation), 0, 0), dataExpected_(dataExpected)
    {
    }

    std::size_t dataExpected() const { return dataExpected_; }

private:
    std::size_t dataExpected_;
};

/// What a board has answered.
class SerialReply
{
public:
    /// What stands behind the status.
    std::span<const std::uint8_t> body() const { return std::span(bytes_).first(size_); }

    void set(std::span<const std::uint8_t> body)
    {
        std::copy(body.begin(), body.end(), bytes_.begin());
        size_ = body.size();
    }

private:
    std::array<std::uint8_t, kMaxMessage> bytes_;
    std::size_t size_ = 0;
};

/// The host's end of the line: it sends a request, over and over if need be, until its reply comes, so that the board
/// carries it out once or, if the transaction fails, at most once.
class SerialSession
{
public:
    /// How often a request is sent before the transaction fails.
    static constexpr unsigned kAttempts = 8;

    /// How long a board may take over a request, with the delays of the adapters in between.
    static constexpr std::uint64_t kServiceNanoseconds = 250'000'000;

    /// After so many transactions in a row that nothing answered, the board is taken for absent: a transaction fails at
    /// once unless the last attempt is that long ago, and one is made then.
    static constexpr unsigned kPatience = 3;
    static constexpr std::uint64_t kRestNanoseconds = 1'000'000'000;

    constexpr SerialSession() = default;

    /// Greets the board at the other end of a line that runs at `rate` bits per second. `nonce` should be another one
    /// than in any session before. Returns VEK_OK, VEK_TIMED_OUT when no board answers, VEK_BAD_DATA when what answers
    /// is no board of ours or speaks another version, or VEK_IO_ERROR when the line fails.
    int begin(SerialPort& port, int rate, std::uint32_t nonce);

    /// Who the board is; has a meaning after a successful begin().
    const BoardServices& board() const { return board_; }

    /// Sends a request and awaits its reply. Returns the result that the board reports, VEK_TIMED_OUT when no reply
    /// came, VEK_IO_ERROR when the line is gone or the board has forgotten the session, or VEK_BAD_DATA for a reply
    /// that makes no sense. Unless the board reports a result, it may have carried out the request or not.
    int transact(SerialRequest& request, SerialReply& reply);

    /// How often a request has been sent again.
    std::uint64_t repeats() const { return repeats_; }

private:
    int greet(unsigned attempts, BoardServices& services);
    int resume(unsigned attempts);
    int exchange(const SerialRequest& request, SerialReply& reply, unsigned attempts);
    int awaitReply(const SerialRequest& request, SerialReply& reply, std::uint64_t deadline);
    int accept(MessageReader& message, SerialReply& reply);
    void noteAnswered(bool answered);
    bool resting();
    std::uint64_t lineTime(std::size_t bytes) const;

    SerialPort* port_ = nullptr;
    BoardServices board_;
    std::uint64_t byteNanoseconds_ = 0;
    std::uint64_t restUntil_ = 0;
    std::uint64_t repeats_ = 0;
    std::uint32_t nonce_ = 0;
    std::uint16_t sequence_ = 0;
    bool established_ = false;
    unsigned unanswered_ = 0;
};

}  // namespace vek

#endif
