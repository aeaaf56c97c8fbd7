// The host's end of the serial line: console lines over our own library on a line whose other end answers whatever the
// input says, from replies that make sense, with any data, to bytes that are none. The library opens a file in the
// place of a terminal; what it writes to it and reads from it passes here.

#include <sys/file.h>
#include <sys/types.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <span>

#include "path/driver_path.h"
#include "serial/board_services.h"
#include "serial/frame.h"
#include "serial/message.h"
#include "support/byte_source.h"
#include "support/console.h"
#include "support/patient_board.h"
#include "support/sandbox.h"
#include "vek.h"

extern "C" {
ssize_t __real_read(int descriptor, void* bytes, std::size_t size);
ssize_t __real_write(int descriptor, const void* bytes, std::size_t size);
int __real_ioctl(int descriptor, unsigned long request, ...);
int __real_flock(int descriptor, int operation);
int __real_tcflush(int descriptor, int queue);
}

namespace
{

using vek::serial_protocol::kHeaderSize;
using vek::serial_protocol::kMaxData;
using vek::serial_protocol::kReplyBit;
using vek::serial_protocol::Operation;

constexpr int kNoDescriptor = -1;

// The line is gone after so many requests, so that no command takes long.
constexpr unsigned kMostRequests = 2000;

// A board that makes what it answers of the input.
class HostileBoard
{
public:
    HostileBoard() = default;
    explicit HostileBoard(std::span<const std::uint8_t> answers) : source_(answers) {}

    void take(std::span<const std::uint8_t> bytes)
    {
        for (const std::uint8_t byte : bytes) {
            if (decoder_.take(byte)) {
                ++requests_;
                answer(decoder_.message());
            }
        }
    }

    bool gone() const { return requests_ > kMostRequests; }

    // Hands out what has been sent, 0 bytes when there is nothing.
    std::size_t give(std::span<std::uint8_t> bytes)
    {
        const std::size_t count = std::min(bytes.size(), sentSize_ - given_);
        std::copy_n(sent_.begin() + static_cast<std::ptrdiff_t>(given_), count, bytes.begin());
        given_ += count;
        return count;
    }

private:
    void answer(std::span<const std::uint8_t> request)
    {
        sentSize_ = 0;
        given_ = 0;
        switch (source_.take8() & 15U) {
            case 1:
                return;
            case 2:
                return sendRaw();
            case 3:
                return sendFrame(anyMessage());
            case 4:
                return sendFrame(anyReply(request));
            default:
                return sendFrame(plausibleReply(request));
        }
    }

    void sendRaw()
    {
        sentSize_ = source_.take8();
        source_.fill(std::span(sent_).first(sentSize_));
    }

    void sendFrame(const vek::MessageWriter& message)
    {
        vek::FrameBuffer buffer;
        const auto frame = vek::encodeFrame(message.bytes(), buffer);
        std::copy(frame.begin(), frame.end(), sent_.begin());
        sentSize_ = frame.size();
    }

    void putAny(vek::MessageWriter& message, std::size_t count)
    {
        for (std::size_t left = std::min(count, vek::kMaxMessage - message.size()); left > 0; --left) {
            message.put8(source_.take8());
        }
    }

    vek::MessageWriter anyMessage()
    {
        const std::uint8_t operation = source_.take8();
        const std::uint16_t session = source_.take16();
        vek::MessageWriter message(operation, session, source_.take16());
        putAny(message, source_.take8());
        return message;
    }

    // A reply to the request, with any status and data.
    vek::MessageWriter anyReply(std::span<const std::uint8_t> request)
    {
        vek::MessageWriter reply = replyTo(request);
        putAny(reply, source_.take16());
        return reply;
    }

    static vek::MessageWriter replyTo(std::span<const std::uint8_t> request)
    {
        vek::MessageReader header(request);
        const std::uint8_t operation = header.take8() | kReplyBit;
        const std::uint16_t session = header.take16();
        return {operation, session, header.take16()};
    }

    // A reply with success and as much data as asked for.
    vek::MessageWriter plausibleReply(std::span<const std::uint8_t> request)
    {
        vek::MessageWriter reply = replyTo(request);
        vek::MessageReader body(request.subspan(std::min(kHeaderSize, request.size())));
        reply.put8(vek::serial_protocol::statusOf(VEK_OK));
        const auto operation = static_cast<Operation>(request[0]);
        switch (operation) {
            case Operation::kGreet:
                putGreeting(reply);
                break;
            case Operation::kRead1:
            case Operation::kRead2:
            case Operation::kRead4:
            case Operation::kRead8:
                putAny(reply, std::size_t{1} << (request[0] - static_cast<unsigned>(Operation::kRead1)));
                break;
            case Operation::kReadLongs:
                body.takeItem(1 + sizeof(std::uint64_t));
                putAny(reply, body.take16() * sizeof(std::uint32_t));
                break;
            case Operation::kI2c:
                body.take16();
                reply.put8(0);
                reply.put16(static_cast<std::uint16_t>(body.rest().size()));
                putAny(reply, std::min<std::size_t>(body.take16(), kMaxData));
                break;
            case Operation::kAux:
                reply.put8(source_.chance(8) ? source_.take8() : std::uint8_t{0});
                putAny(reply, source_.take8() % 17U);
                break;
            case Operation::kSpi:
                body.take8();
                putAny(reply, std::min<std::size_t>(body.take16(), kMaxData));
                break;
            default:
                break;
        }
        return reply;
    }

    void putGreeting(vek::MessageWriter& reply)
    {
        vek::BoardServices services = vek::servicesOf(*vek::driverPath(source_.take8() % 2));
        services.session = 1;
        reply.put8(vek::serial_protocol::kVersion);
        vek::putServices(reply, services);
    }

    fuzz::ByteSource source_;
    vek::FrameDecoder decoder_;
    std::array<std::uint8_t, vek::kMaxFrame> sent_{};
    std::size_t sentSize_ = 0;
    std::size_t given_ = 0;
    unsigned requests_ = 0;
};

HostileBoard board;
int line = kNoDescriptor;

}  // namespace

extern "C" {

// Nothing but the opening of a line locks a descriptor.
int __wrap_flock(int descriptor, int /*operation*/)
{
    line = descriptor;
    return 0;
}

int __wrap_ioctl(int descriptor, unsigned long request, ...)
{
    if (descriptor == line) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return __real_ioctl(descriptor, request, argument);
}

int __wrap_tcflush(int descriptor, int queue)
{
    return descriptor == line ? 0 : __real_tcflush(descriptor, queue);
}

ssize_t __wrap_read(int descriptor, void* bytes, std::size_t size)
{
    if (descriptor != line) {
        return __real_read(descriptor, bytes, size);
    }
    if (board.gone()) {
        return 0;
    }
    const std::size_t count = board.give({static_cast<std::uint8_t*>(bytes), size});
    if (count == 0) {
        errno = EAGAIN;
        return -1;
    }
    return static_cast<ssize_t>(count);
}

ssize_t __wrap_write(int descriptor, const void* bytes, std::size_t size)
{
    if (descriptor != line) {
        return __real_write(descriptor, bytes, size);
    }
    board.take({static_cast<const std::uint8_t*>(bytes), size});
    return static_cast<ssize_t>(size);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr int kRate = 115200;
    const fuzz::TextAndAnswers input = fuzz::splitInput(data, size);
    const fuzz::Sandbox sandbox({}, true);
    fuzz::Sandbox::addFile("line", {});
    fuzz::expectMailboxAnswers();
    board = HostileBoard(input.answers);
    vekSerialOpen("line", kRate);
    fuzz::runLines(input.text);
    vekClose();
    line = kNoDescriptor;
    return 0;
}

}  // extern "C"
