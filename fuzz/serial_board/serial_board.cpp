// The board's end of the serial line. The input is a row of pieces, each headed by a byte: raw bytes for the line, or a
// message that is put into a frame with its check sum, with the session and sequence number that the board expects or
// with numbers of its own.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

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
    }

    std::uint16_t session() const { return session_; }

private:
    void look(std::span<const std::uint8_t> message)
    {
        fuzz::require(message.size() > kHeaderSize && (message[0] & kReplyBit) != 0);
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
    std::uint16_t session_ = 0;
};

// Plays the pieces of an input to a board.
class Player
{
public:
    Player(vek::BoardEnd& board, const Host& host, std::span<const std::uint8_t> input)
        : board_(board), host_(host), input_(input)
    {
    }

    bool atEnd() const { return input_.rest().empty(); }

    void playPiece()
    {
        const auto piece = static_cast<Piece>(input_.take8() % kPieces);
        if (piece == Piece::kRaw) {
            board_.take(takeBytes(input_.take8()));
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
        vek::FrameBuffer buffer;
        board_.take(vek::encodeFrame(message.bytes(), buffer));
    }

private:
    // As many bytes of the input, or those that are left.
    std::span<const std::uint8_t> takeBytes(std::size_t count)
    {
        const auto bytes = input_.rest().first(std::min(count, input_.rest().size()));
        input_ = vek::MessageReader(input_.rest().subspan(bytes.size()));
        return bytes;
    }

    vek::BoardEnd& board_;
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
    Player player(board, host, std::span(data, size).subspan(1));
    while (!player.atEnd()) {
        player.playPiece();
    }
    return 0;
}
