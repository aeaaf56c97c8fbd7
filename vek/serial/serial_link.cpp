#include "serial/serial_link.h"

namespace vek
{

void SerialLink::use(const SerialSession& session)
{
    pthread_mutex_lock(&mutex_);
    session_ = session;
    pthread_mutex_unlock(&mutex_);
}

std::uint64_t SerialLink::repeats()
{
    pthread_mutex_lock(&mutex_);
    const std::uint64_t repeats = session_.repeats();
    pthread_mutex_unlock(&mutex_);
    return repeats;
}

int SerialLink::transact(SerialRequest& request, SerialReply& reply)
{
    pthread_mutex_lock(&mutex_);
    const int result = session_.transact(request, reply);
    pthread_mutex_unlock(&mutex_);
    return result;
}

}  // namespace vek
