#ifndef VEK_SERIAL_SERIAL_LINK_H
#define VEK_SERIAL_SERIAL_LINK_H

#include <pthread.h>

#include "serial/serial_session.h"

namespace vek
{

/// The session that the proxies of a board's spaces and buses share. Any thread may transact at any time; transactions
/// take turns.
class SerialLink
{
public:
    constexpr SerialLink() = default;
    SerialLink(const SerialLink&) = delete;
    SerialLink& operator=(const SerialLink&) = delete;

    /// Goes over to another session; a fresh one, without a line, fails every transaction with VEK_IO_ERROR. The one
    /// before is no longer in use when this returns.
    void use(const SerialSession& session);

    /// As SerialSession::transact().
    int transact(SerialRequest& request, SerialReply& reply);

    /// How often a request has been sent again in the session.
    std::uint64_t repeats();

private:
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    SerialSession session_;
};

}  // namespace vek

#endif
