#ifndef VEK_PAUSE_H
#define VEK_PAUSE_H

#include <cstdint>

namespace vek
{

/// How a driver lets time pass between two looks at a device.
class Pause
{
public:
    /// Comes back when at least so much time has passed.
    virtual void microseconds(std::uint32_t duration) = 0;

protected:
    constexpr Pause() = default;
    ~Pause() = default;
};

/// Puts the calling thread to sleep.
class HostPause final : public Pause
{
public:
    void microseconds(std::uint32_t duration) override;
};

}  // namespace vek

#endif
