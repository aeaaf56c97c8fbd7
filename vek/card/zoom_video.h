#ifndef VEK_CARD_ZOOM_VIDEO_H
#define VEK_CARD_ZOOM_VIDEO_H

#include <array>
#include <cstdint>

#include "address_space.h"
#include "card/card_clock.h"
#include "card/saa7111a.h"
#include "drivers/zoom_video.h"

namespace vek
{

/// The registers of both zoom-video ports as drivers/zoom_video.h lays them out, from zoom_video::kBase on. A port
/// measures the picture of its decoder, which comes in whether the port has been set up or not.
class ZoomVideoPorts final : public AddressSpace
{
public:
    /// All have to live as long as the ports.
    constexpr ZoomVideoPorts(const CardClock& clock, const Saa7111a& decoder0, const Saa7111a& decoder1)
        : clock_(clock), ports_{Port{&decoder0}, Port{&decoder1}}
    {
    }

    ReadResult read(std::uint64_t address, unsigned width) override;
    int write(std::uint64_t address, unsigned width, std::uint64_t value) override;

    /// Hands over what changes, as state/state_visitor.h says.
    template <typename Visitor>
    void visitState(Visitor& visit)
    {
        for (Port& port : ports_) {
            visit(port.capturing, port.captureStart, port.held.width, port.held.height);
        }
        visit(bytes_);
    }

private:
    using Bytes = std::array<unsigned char, zoom_video::kSize>;

    struct Size {
        std::uint16_t width = 0;
        std::uint16_t height = 0;
    };

    struct Port {
        const Saa7111a* decoder;
        bool capturing = false;
        std::uint64_t captureStart = 0;  ///< In nanoseconds of the clock.
        Size held{};                     ///< What the capture logic had measured when it stopped.
    };

    Size measured(const Port& port) const;
    void putSizes(Bytes& bytes) const;
    void followControl(Port& port, std::uint64_t control);

    const CardClock& clock_;
    std::array<Port, zoom_video::kPorts> ports_;
    Bytes bytes_{};
};

}  // namespace vek

#endif
