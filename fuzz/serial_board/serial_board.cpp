// The board's end of the serial line. The input is a row of pieces, each headed by a byte: raw bytes for the line, or a
// message that is put into a frame with its check sum, with the session and sequence number that the board expects or
// with numbers of its own. Whether the board carries out a message, once and no more, and what it answers to one that
// is repeated is compared with a second reading of the protocol.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "path/driver_path.h"
#include "serial/board_end.h"
#include "serial/frame.h"
#include "serial/message.h"
#include "support/require.h"
#include "support/sandbox.h"

namespace
{

using vek::serial_protocol::kHeaderSize;
using vek::serial_protocol::kReplyBit;
using vek::serial_protocol::Operation;

enum class Piece : std::uint8_t { kRaw, kNextRequest, kSameRequest, kOwnNumbers };
constexpr std::uint8_t kPieces = 4;

// In the byte that heads a message.
constexpr std::uint8_t kSentTwice = 0x80;

// In the byte that heads raw bytes: there are more of them then than a frame may have.
constexpr std::uint8_t kSentManyTimes = 0x80;
constexpr int kManyTimes = 8;

using Bytes = std::vector<std::uint8_t>;

// The end of the line at which replies arrive.
class Host final : public vek::ReplySink
{
public:
    void send(std::span<const std::uint8_t> frame) override
    {
        int messages = 0;
        for (const std::uint8_t byte : frame) {
            if (decoder_.take(byte)) {
                ++messages;
                look(decoder_.message());
            }
        }
        fuzz::require(messages == 1);
        ++replies_;
    }

    std::uint16_t session() const { return session_; }
    unsigned replies() const { return replies_; }
    const Bytes& lastReply() const { return lastReply_; }

private:
    void look(std::span<const std::uint8_t> message)
    {
        fuzz::require(message.size() > kHeaderSize && (message[0] & kReplyBit) != 0);
        lastReply_.assign(message.begin(), message.end());
        if (message[0] != (static_cast<std::uint8_t>(Operation::kGreet) | kReplyBit)) {
            return;
        }
        vek::MessageReader body(message.subspan(kHeaderSize));
        const std::uint8_t status = body.take8();
        body.take8();
        if (status == vek::serial_protocol::statusOf(VEK_OK)) {
            session_ = body.take16();
            fuzz::require(session_ != 0 && body.sound());
        }
    }

    vek::FrameDecoder decoder_;
    Bytes lastReply_;
    std::uint16_t session_ = 0;
    unsigned replies_ = 0;
};

// What the board has to do with each message, as the protocol's description says.
class Follower
{
public:
    Follower(vek::BoardEnd& board, const Host& host) : board_(board), host_(host) {}

    void takeRaw(std::span<const std::uint8_t> bytes)
    {
        const std::uint64_t executions = board_.executions();
        board_.take(bytes);
        // Whole frames may stand in it.
        noteSession();
        known_ = known_ && board_.executions() == executions;
    }

    void takeMessage(const vek::MessageWriter& message)
    {
        // Ends what stood on the line before.
        constexpr std::uint8_t kDelimiter = 0;
        takeRaw({&kDelimiter, 1});
        const Bytes bytes(message.bytes().begin(), message.bytes().end());
        const bool isNew = isNewRequest(bytes);
        const bool isRepeated = known_ && bytes == lastRequest_;
        const std::uint64_t executions = board_.executions();
        const unsigned replies = host_.replies();
        vek::FrameBuffer buffer;
        board_.take(vek::encodeFrame(message.bytes(), buffer));
        const std::uint64_t executed = board_.executions() - executions;
        fuzz::require(executed <= 1 && (!known_ || executed == (isNew ? 1U : 0U)));
        fuzz::require(host_.replies() - replies == (isAnswered(bytes) ? 1U : 0U));
        if (isRefused(bytes)) {
            fuzz::require(executed == 0 && host_.lastReply()[kHeaderSize] == vek::serial_protocol::kNoSession);
        } else if (known_ && isRequest(bytes) && !isNew && !isRepeated) {
            fuzz::require(host_.lastReply()[kHeaderSize] == vek::serial_protocol::kStale);
        }
        noteSession();
        if (executed == 1) {
            known_ = true;
            lastRequest_ = bytes;
            lastReply_ = host_.lastReply();
        } else if (isRepeated) {
            fuzz::require(host_.lastReply() == lastReply_);
        }
    }

private:
    static std::uint16_t numberAt(const Bytes& message, std::size_t offset)
    {
        return vek::MessageReader(std::span(message).subspan(offset)).take16();
    }

    bool isNewRequest(const Bytes& message) const
    {
        constexpr std::uint16_t kHalfOfAll = 0x8000;
        const auto ahead =
            static_cast<std::uint16_t>(numberAt(message, 3) - (lastRequest_.empty() ? 0 : numberAt(lastRequest_, 3)));
        return isRequest(message) && !isRefused(message) && ahead != 0 && ahead < kHalfOfAll;
    }

    static bool isRequest(const Bytes& message)
    {
        return (message[0] & kReplyBit) == 0 && message[0] != static_cast<std::uint8_t>(Operation::kGreet);
    }

    bool isRefused(const Bytes& message) const
    {
        return isRequest(message) && (session_ == 0 || numberAt(message, 1) != session_);
    }

    static bool isAnswered(const Bytes& message)
    {
        return (message[0] & kReplyBit) == 0 &&
               (message[0] != static_cast<std::uint8_t>(Operation::kGreet) || message.size() > kHeaderSize);
    }

    void noteSession()
    {
        if (host_.session() != session_) {
            session_ = host_.session();
            known_ = true;
            lastRequest_.clear();
        }
    }

    vek::BoardEnd& board_;
    const Host& host_;
    std::uint16_t session_ = 0;
    // Not after whole requests in raw bytes.
    bool known_ = true;
    Bytes lastRequest_;
    Bytes lastReply_;
};

// Plays the pieces of an input to a board.
class Player
{
public:
    Player(Follower& follower, const Host& host, std::span<const std::uint8_t> input)
        : follower_(follower), host_(host), input_(input)
    {
    }

    bool atEnd() const { return input_.rest().empty(); }

    void playPiece()
    {
        const std::uint8_t head = input_.take8();
        const auto piece = static_cast<Piece>(head % kPieces);
        if (piece == Piece::kRaw) {
            const auto bytes = takeBytes(input_.take8());
            for (int left = (head & kSentManyTimes) != 0 ? kManyTimes : 1; left > 0; --left) {
                follower_.takeRaw(bytes);
            }
            return;
        }
        const std::uint8_t operation = input_.take8();
        std::uint16_t session = host_.session();
        std::uint16_t sequence = sequence_;
        if (piece == Piece::kNextRequest) {
            sequence = ++sequence_;
        } else if (piece == Piece::kOwnNumbers) {
            session = input_.take16();
            sequence = input_.take16();
        }
        vek::MessageWriter message(operation, session, sequence);
        message.putBytes(takeBytes(input_.take16() % (vek::kMaxMessage - kHeaderSize + 1)));
        follower_.takeMessage(message);
        if ((head & kSentTwice) != 0) {
            follower_.takeMessage(message);
        }
    }

private:
    // As many bytes of the input, or those that are left.
    std::span<const std::uint8_t> takeBytes(std::size_t count)
    {
        const auto bytes = input_.rest().first(std::min(count, input_.rest().size()));
        input_ = vek::MessageReader(input_.rest().subspan(bytes.size()));
        return bytes;
    }

    Follower& follower_;
    const Host& host_;
    vek::MessageReader input_;
    std::uint16_t sequence_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const fuzz::Sandbox sandbox;
    Host host;
    vek::BoardEnd board(*vek::driverPath(data[0] % 2), host);
    Follower follower(board, host);
    Player player(follower, host, std::span(data, size).subspan(1));
    while (!player.atEnd()) {
        player.playPiece();
    }
    return 0;
}
