#ifndef TESTS_VEK_CARD_AUX_FAKES_H
#define TESTS_VEK_CARD_AUX_FAKES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <utility>
#include <vector>

#include "aux_channel.h"

/// An AUX channel that notes the requests and asks a function for the replies.
class NotingAux final : public vek::AuxChannel
{
public:
    using Answer = std::function<vek::AuxReply(const vek::AuxRequest&)>;

    explicit NotingAux(Answer answer) : answer_(std::move(answer)) {}

    /// Passes everything on.
    explicit NotingAux(vek::AuxChannel& next)
        : answer_([&next](const vek::AuxRequest& request) { return next.transact(request); })
    {
    }

    vek::AuxReply transact(const vek::AuxRequest& request) override
    {
        requests.push_back(request);
        return answer_(request);
    }

    std::vector<vek::AuxRequest> requests;

private:
    Answer answer_;
};

/// A reply with some bytes.
inline vek::AuxReply replyWith(vek::AuxAnswer answer, std::initializer_list<std::uint8_t> bytes = {})
{
    vek::AuxReply reply{.answer = answer, .length = static_cast<std::uint8_t>(bytes.size())};
    std::copy(bytes.begin(), bytes.end(), reply.data.begin());
    return reply;
}

/// An acknowledgement with `count` bytes that are the low bytes of their addresses.
inline vek::AuxReply fieldsAt(std::uint32_t address, std::size_t count)
{
    vek::AuxReply reply{.answer = vek::AuxAnswer::kAck, .length = static_cast<std::uint8_t>(count)};
    for (std::size_t index = 0; index < std::min(count, vek::kMaxAuxBytes); ++index) {
        reply.data[index] = static_cast<std::uint8_t>(address + index);
    }
    return reply;
}

#endif
