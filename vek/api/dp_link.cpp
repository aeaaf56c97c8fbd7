#include "drivers/dp_link.h"

#include "api/channels.h"
#include "api/dp_aux.h"
#include "drivers/dp_controller.h"
#include "drivers/dp_phy.h"
#include "drivers/output_timing.h"
#include "pause.h"
#include "vek.h"

namespace vek
{
namespace
{

auto findPhy(int channel)
{
    return findChannel<&AccessPath::dpPhys>(channel, VEK_BAD_ARGUMENT);
}

auto findController(int channel)
{
    return findChannel<&AccessPath::dpControllers>(channel, VEK_BAD_ARGUMENT);
}

/// Lets `use`, a function of PHY and controller that returns a result, work on those of an output.
template <typename Use>
int withOutput(int channel, Use use)
{
    const auto [foundPhy, phyRegisters] = findPhy(channel);
    const auto [foundController, controllerRegisters] = findController(channel);
    if (foundPhy != VEK_OK || foundController != VEK_OK) {
        return foundPhy != VEK_OK ? foundPhy : foundController;
    }
    const CardHold hold(openCardLock());
    HostPause pause;
    DpPhyDriver phy(*phyRegisters, pause);
    DpControllerDriver controller(*controllerRegisters);
    return use(phy, controller);
}

int trainLink(AuxTransfer& aux, DpPhyDriver& phy, DpControllerDriver& controller)
{
    const int stopped = controller.dropLink();
    if (stopped != VEK_OK) {
        return stopped;
    }
    DpLink link{};
    const int result = DpLinkTrainer(aux, phy).train(link);
    return result == VEK_OK ? controller.setLink(link) : result;
}

int sendStream(AuxTransfer& aux, DpControllerDriver& controller)
{
    bool trained = false;
    int result = senseLink(aux, trained);
    if (result != VEK_OK) {
        return result;
    }
    if (!trained) {
        return VEK_IO_ERROR;
    }
    VekDisplayMode mode{};
    result = sinkTiming(aux, mode);
    return result == VEK_OK ? controller.sendStream(mode) : result;
}

/// Reads a register of an output into a caller's cell.
template <typename Item>
int readRegister(const FoundChannel<AddressSpace>& registers, std::uint32_t address, Item* cell)
{
    if (registers.result != VEK_OK) {
        return registers.result;
    }
    if (cell == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    const auto [result, value] = registers.target->read(address, sizeof *cell);
    if (result == VEK_OK || result == VEK_NO_RESPONSE) {
        *cell = static_cast<Item>(value);
    }
    return result;
}

template <typename Item>
int writeRegister(const FoundChannel<AddressSpace>& registers, std::uint32_t address, Item value)
{
    return registers.result == VEK_OK ? registers.target->write(address, sizeof value, value) : registers.result;
}

}  // namespace
}  // namespace vek

int vekDpInit(int channel)
{
    return vek::withOutput(channel, [](vek::DpPhyDriver& phy, vek::DpControllerDriver& controller) {
        const int result = phy.init();
        return result == VEK_OK ? controller.init() : result;
    });
}

int vekDpLinkTraining(int channel)
{
    return vek::withOutput(channel, [&](vek::DpPhyDriver& phy, vek::DpControllerDriver& controller) {
        return vek::withDpAux(channel, [&](vek::AuxTransfer& aux) { return vek::trainLink(aux, phy, controller); });
    });
}

int vekDpCTLCfg(int channel)
{
    return vek::withOutput(channel, [&](vek::DpPhyDriver& /*phy*/, vek::DpControllerDriver& controller) {
        return vek::withDpAux(channel, [&](vek::AuxTransfer& aux) { return vek::sendStream(aux, controller); });
    });
}

int vekDpPhyRead(int channel, uint32_t address, uint32_t* value)
{
    return vek::readRegister(vek::findPhy(channel), address, value);
}

int vekDpPhyWrite(int channel, uint32_t address, uint32_t value)
{
    return vek::writeRegister(vek::findPhy(channel), address, value);
}

int vekDpCdbRead(int channel, uint32_t address, uint16_t* value)
{
    return vek::readRegister(vek::findController(channel), address, value);
}

int vekDpCdbWrite(int channel, uint32_t address, uint16_t value)
{
    return vek::writeRegister(vek::findController(channel), address, value);
}
