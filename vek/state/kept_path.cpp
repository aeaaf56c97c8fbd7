#include "state/kept_path.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#include "card/host_pages.h"
#include "state/kept_buses.h"

namespace vek
{
namespace
{

/// Room for objects of which it turns out how many there are.
template <typename Object, std::size_t Most>
class Pool
{
public:
    template <typename... Arguments>
    Object* make(Arguments&... arguments)
    {
        return new (room_ + sizeof(Object) * taken_++) Object(arguments...);
    }

private:
    alignas(Object) std::byte room_[sizeof(Object) * Most];
    std::size_t taken_ = 0;
};

/// A kept card with all that stands before it.
struct KeptEnds {
    explicit KeptEnds(const AccessPath& plain, const KeptCard& card) : path(plain), keeper(card) {}

    /// Puts what is kept before what a target is of; null stays null.
    AddressSpace* before(AddressSpace* space) { return space == nullptr ? nullptr : spaces.make(keeper, *space); }
    BlockSpace* before(BlockSpace* space) { return space == nullptr ? nullptr : memories.make(keeper, *space); }
    I2cBus* before(I2cBus* bus) { return bus == nullptr ? nullptr : i2cBuses.make(keeper, *bus); }
    SpiBus* before(SpiBus* bus) { return bus == nullptr ? nullptr : spiBuses.make(keeper, *bus); }
    AuxChannel* before(AuxChannel* channel)
    {
        return channel == nullptr ? nullptr : auxChannels.make(keeper, *channel);
    }

    template <typename Target, std::size_t Most>
    Channels<Target, Most> before(const Channels<Target, Most>& targets)
    {
        Channels<Target, Most> kept{};
        for (std::size_t channel = 0; channel < Most; ++channel) {
            kept[channel] = before(targets[channel]);
        }
        return kept;
    }

    AccessPath path;
    CardKeeper keeper;
    Pool<KeptSpace, 24> spaces;
    Pool<KeptMemory, 1> memories;
    Pool<KeptI2cBus, 8> i2cBuses;
    Pool<KeptSpiBus, 1> spiBuses;
    Pool<KeptAuxChannel, 2> auxChannels;
};

/// Everything that lies on the card; the host's kernel memory does not.
void putBefore(KeptEnds& ends)
{
    AccessPath& path = ends.path;
    path.registerRegion = ends.before(path.registerRegion);
    path.registers = path.registerRegion;
    path.videoMemory = ends.before(path.videoMemory);
    path.amba = ends.before(path.amba);
    path.crtc = ends.before(path.crtc);
    path.pciConfiguration = ends.before(path.pciConfiguration);
    path.sensors = ends.before(path.sensors);
    path.clocks = ends.before(path.clocks);
    path.power = ends.before(path.power);
    path.features = ends.before(path.features);
    path.information = ends.before(path.information);
    path.axiMonitor = ends.before(path.axiMonitor);
    path.i2c = ends.before(path.i2c);
    path.spi = ends.before(path.spi);
    path.ddc = ends.before(path.ddc);
    path.hdmiPhys = ends.before(path.hdmiPhys);
    path.gammaTables = ends.before(path.gammaTables);
    path.vgaDac = ends.before(path.vgaDac);
    path.dpAux = ends.before(path.dpAux);
    path.dpPhys = ends.before(path.dpPhys);
    path.dpControllers = ends.before(path.dpControllers);
    path.edpBacklight = ends.before(path.edpBacklight);
    path.lock = &ends.keeper;
    ends.keeper.watch({path.registers, path.videoMemory, path.amba, path.crtc});
}

}  // namespace

const char* stateFolder()
{
    const char* folder = secure_getenv(kStateFolderVariable);
    return folder == nullptr || folder[0] == '\0' ? nullptr : folder;
}

OpenedPath keepPath(const AccessPath& path, const KeptCard& card, const char* folder)
{
    unsigned char* pages = mapHostPages(sizeof(KeptEnds));
    if (pages == nullptr) {
        return {VEK_NO_MEMORY, nullptr};
    }
    auto& ends = *new (pages) KeptEnds(path, card);
    const int result = ends.keeper.open(folder);
    if (result != VEK_OK) {
        unmapHostPages(pages, sizeof(KeptEnds));
        return {result, nullptr};
    }
    putBefore(ends);
    return {VEK_OK, &ends.path};
}

}  // namespace vek
