#ifndef VEK_SERIAL_BOARD_END_H
#define VEK_SERIAL_BOARD_END_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "path/access_path.h"
#include "serial/board_services.h"
#include "serial/frame.h"
#include "serial/message.h"

namespace vek
{

/// Takes what a board sends.
class ReplySink
{
public:
    /// A frame for the line, which the board sends again when its request is repeated; it need not arrive.
    virtual void send(std::span<const std::uint8_t> frame) = 0;

protected:
    constexpr ReplySink() = default;
    ~ReplySink() = default;
};

/// The board's end of the line: it carries out the requests of one host after the other on a card, each of them once.
/// Any bytes may come.
class BoardEnd
{
public:
    BoardEnd(const AccessPath& card, ReplySink& sink) : card_(card), sink_(sink) {}

    /// Takes bytes from the line, with requests that may begin and end anywhere in them.
    void take(std::span<const std::uint8_t> bytes);

    /// How many requests have been carried out.
    std::uint64_t executions() const { return executions_; }

private:
    void handle(std::span<const std::uint8_t> message);
    void greet(std::uint16_t nonceLow, std::uint16_t nonceHigh, MessageReader& body);
    void serve(std::span<const std::uint8_t> message, std::uint16_t session, std::uint16_t sequence,
               MessageReader& body);
    void refuse(std::uint8_t operation, std::uint16_t session, std::uint16_t sequence, std::uint8_t status);
    int execute(serial_protocol::Operation operation, MessageReader& body, MessageWriter& reply);
    int readItem(unsigned width, MessageReader& body, MessageWriter& reply);
    int writeItem(unsigned width, MessageReader& body);
    int readLongs(MessageReader& body, MessageWriter& reply);
    int writeLongs(MessageReader& body);
    int fillLongs(MessageReader& body);
    int runI2c(MessageReader& body, MessageWriter& reply);
    int transactAux(MessageReader& body, MessageWriter& reply);
    int runSpi(MessageReader& body, MessageWriter& reply);
    AddressSpace* space(std::size_t number) const;
    I2cBus* i2cBus(std::size_t number) const;

    const AccessPath& card_;
    ReplySink& sink_;
    FrameDecoder decoder_;
    FrameBuffer lastReply_{};        ///< To the request with the number lastSequence_.
    std::size_t lastReplySize_ = 0;  ///< 0 before the first request of a session.
    std::uint32_t lastRequest_ = 0;  ///< Check sum of that request.
    std::uint16_t lastSequence_ = 0;
    std::uint16_t session_ = 0;
    std::uint32_t nonce_ = 0;
    bool greeted_ = false;
    std::uint64_t executions_ = 0;
};

}  // namespace vek

#endif
