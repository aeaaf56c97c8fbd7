#include "api/channels.h"
#include "api/displays.h"
#include "api/last_edid.h"
#include "drivers/edid/edid.h"
#include "drivers/hdmi_phy.h"
#include "drivers/i2c_transfer.h"
#include "vek.h"

namespace vek
{
namespace
{

auto findPhy(int channel)
{
    return findChannel<&AccessPath::hdmiPhys>(channel, VEK_BAD_ARGUMENT);
}

/// The DDC of an HDMI output; the channels beyond those belong to other connectors.
FoundChannel<I2cBus> findDdc(int channel)
{
    const int result = findPhy(channel).result;
    return result == VEK_OK ? findChannel<&AccessPath::ddc>(channel, VEK_BAD_ARGUMENT)
                            : FoundChannel<I2cBus>{result, nullptr};
}

/// Runs one of the operations of the PHY that take no argument.
int runOnPhy(int channel, int (HdmiPhyDriver::*operation)())
{
    const auto [result, registers] = findPhy(channel);
    if (result != VEK_OK) {
        return result;
    }
    const CardHold hold(openCardLock());
    HdmiPhyDriver phy(*registers);
    return (phy.*operation)();
}

}  // namespace
}  // namespace vek

int vekHdmiDDCInit(int channel)
{
    const auto [result, ddc] = vek::findDdc(channel);
    const vek::CardHold hold(vek::openCardLock());
    return result == VEK_OK ? vek::freeI2cBus(*ddc) : result;
}

int vekHdmiDDCRead(int channel, uint8_t slave, uint8_t sub_address, uint8_t* value)
{
    const auto [result, ddc] = vek::findDdc(channel);
    if (result != VEK_OK) {
        return result;
    }
    const vek::CardHold hold(vek::openCardLock());
    return value == nullptr ? VEK_BAD_ARGUMENT : vek::readI2c(*ddc, slave, sub_address, {value, 1});
}

int vekHdmiDDCWrite(int channel, uint8_t slave, uint8_t sub_address, uint8_t value)
{
    const auto [result, ddc] = vek::findDdc(channel);
    const vek::CardHold hold(vek::openCardLock());
    return result == VEK_OK ? vek::writeI2c(*ddc, slave, sub_address, {&value, 1}) : result;
}

int vekHdmiEDIDRead(int channel)
{
    const auto [found, ddc] = vek::findDdc(channel);
    if (found != VEK_OK) {
        return found;
    }
    const int result = vek::fetchEdid(*ddc);
    if (result != VEK_OK) {
        return result;
    }
    const auto edid = vek::lastEdid();
    vek::printEdid(stdout, edid, true);
    return vek::checkEdid(edid).valid() ? VEK_OK : VEK_BAD_DATA;
}

int vekHdmiHpdSense(int channel, uint8_t* status)
{
    const auto [found, registers] = vek::findPhy(channel);
    if (found != VEK_OK) {
        return found;
    }
    if (status == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    bool attached = false;
    const int result = vek::HdmiPhyDriver(*registers).senseHotPlug(attached);
    if (result == VEK_OK) {
        *status = attached ? 1 : 0;
    }
    return result;
}

int vekHdmiModeRead(int channel, VekDisplayMode* mode)
{
    const int found = vek::findDdc(channel).result;
    if (found != VEK_OK) {
        return found;
    }
    return vek::readOutputTiming(channel == 0 ? vek::DisplayOutput::kHdmi0 : vek::DisplayOutput::kHdmi1, mode);
}

int vekHdmiPhyStart(int channel)
{
    return vek::runOnPhy(channel, &vek::HdmiPhyDriver::open);
}

int vekHdmiPhyEnd(int channel)
{
    return vek::runOnPhy(channel, &vek::HdmiPhyDriver::close);
}

int vekHdmiPhyReset(int channel)
{
    return vek::runOnPhy(channel, &vek::HdmiPhyDriver::reset);
}

int vekHdmiPhyRead(int channel, uint32_t address, uint16_t* value)
{
    const auto [found, registers] = vek::findPhy(channel);
    if (found != VEK_OK) {
        return found;
    }
    if (value == nullptr) {
        return VEK_BAD_ARGUMENT;
    }
    const auto [result, read] = registers->read(address, sizeof *value);
    if (result == VEK_OK || result == VEK_NO_RESPONSE) {
        *value = static_cast<uint16_t>(read);
    }
    return result;
}

int vekHdmiPhyWrite(int channel, uint32_t address, uint16_t value)
{
    const auto [result, registers] = vek::findPhy(channel);
    return result == VEK_OK ? registers->write(address, sizeof value, value) : result;
}
