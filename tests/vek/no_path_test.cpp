#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "captured_output.h"
#include "declared_functions.h"
#include "vek.h"

namespace
{

constexpr unsigned char kUntouched = 0xa5;
constexpr std::size_t kCellSize = 1024;
constexpr uint8_t kInput[kCellSize] = {};

/** Room for every output of one call, each in a cell of its own. */
alignas(std::max_align_t) std::array<unsigned char, 16 * kCellSize> outputs;

template <typename Output>
Output* out(std::size_t cell)
{
    return reinterpret_cast<Output*>(outputs.data() + cell * kCellSize);
}

/** A call of a function with arguments that it could serve. */
struct Call {
    const char* name;
    int (*call)();
};

/** Calls a function; its outputs and the standard output must stay as they are. @return its result. */
int callWithoutTrace(const Call& call)
{
    outputs.fill(kUntouched);
    CapturedOutput output;
    const int result = call.call();
    EXPECT_TRUE(std::all_of(outputs.begin(), outputs.end(), [](unsigned char byte) { return byte == kUntouched; }))
        << call.name;
    EXPECT_EQ(output.take(), "") << call.name;
    return result;
}

/** All functions that need a card. */
const std::vector<Call>& cardCalls()
{
    static const std::vector<Call> calls = {
        {"get_s_type", [] { return get_s_type(); }},
        {"vekGetCard", [] { return vekGetCard(); }},
        {"vekRegReadByte", [] { return vekRegReadByte(1, out<uint8_t>(0)); }},
        {"vekRegReadWord", [] { return vekRegReadWord(1, out<uint16_t>(0)); }},
        {"vekRegReadLong", [] { return vekRegReadLong(1, out<uint32_t>(0)); }},
        {"vekRegReadQuad", [] { return vekRegReadQuad(1, out<uint64_t>(0)); }},
        {"vekRegWriteByte", [] { return vekRegWriteByte(1, 1); }},
        {"vekRegWriteWord", [] { return vekRegWriteWord(1, 1); }},
        {"vekRegWriteLong", [] { return vekRegWriteLong(1, 1); }},
        {"vekRegWriteQuad", [] { return vekRegWriteQuad(1, 1); }},
        {"vekVramReadByte", [] { return vekVramReadByte(1, out<uint8_t>(0)); }},
        {"vekVramReadWord", [] { return vekVramReadWord(1, out<uint16_t>(0)); }},
        {"vekVramReadLong", [] { return vekVramReadLong(1, out<uint32_t>(0)); }},
        {"vekVramReadQuad", [] { return vekVramReadQuad(1, out<uint64_t>(0)); }},
        {"vekVramWriteByte", [] { return vekVramWriteByte(1, 1); }},
        {"vekVramWriteWord", [] { return vekVramWriteWord(1, 1); }},
        {"vekVramWriteLong", [] { return vekVramWriteLong(1, 1); }},
        {"vekVramWriteQuad", [] { return vekVramWriteQuad(1, 1); }},
        {"vekMultiVramReadLong", [] { return vekMultiVramReadLong(out<uint32_t>(0), 1, 4, nullptr); }},
        {"vekMultVramWriteLong", [] { return vekMultVramWriteLong(1, 1, 4, nullptr); }},
        {"vekKmemReadByte", [] { return vekKmemReadByte(1, out<uint8_t>(0)); }},
        {"vekKmemReadWord", [] { return vekKmemReadWord(1, out<uint16_t>(0)); }},
        {"vekKmemReadLong", [] { return vekKmemReadLong(1, out<uint32_t>(0)); }},
        {"vekKmemReadQuad", [] { return vekKmemReadQuad(1, out<uint64_t>(0)); }},
        {"vekKmemWriteByte", [] { return vekKmemWriteByte(1, 1); }},
        {"vekKmemWriteWord", [] { return vekKmemWriteWord(1, 1); }},
        {"vekKmemWriteLong", [] { return vekKmemWriteLong(1, 1); }},
        {"vekKmemWriteQuad", [] { return vekKmemWriteQuad(1, 1); }},
        {"vekAmbaReadByte", [] { return vekAmbaReadByte(1, out<uint8_t>(0)); }},
        {"vekAmbaReadWord", [] { return vekAmbaReadWord(1, out<uint16_t>(0)); }},
        {"vekAmbaReadLong", [] { return vekAmbaReadLong(1, out<uint32_t>(0)); }},
        {"vekAmbaReadQuad", [] { return vekAmbaReadQuad(1, out<uint64_t>(0)); }},
        {"vekAmbaWriteByte", [] { return vekAmbaWriteByte(1, 1); }},
        {"vekAmbaWriteWord", [] { return vekAmbaWriteWord(1, 1); }},
        {"vekAmbaWriteLong", [] { return vekAmbaWriteLong(1, 1); }},
        {"vekAmbaWriteQuad", [] { return vekAmbaWriteQuad(1, 1); }},
        {"vekCrtcReadByte", [] { return vekCrtcReadByte(1, out<uint8_t>(0)); }},
        {"vekCrtcWriteByte", [] { return vekCrtcWriteByte(1, 1); }},
        {"vekPciRead", [] { return vekPciRead(1, out<uint32_t>(0)); }},
        {"vekPciWrite", [] { return vekPciWrite(1, 1); }},
        {"vekRunScript", [] { return vekRunScript("0"); }},
        {"vekI2cRead", [] { return vekI2cRead(1, 1, 1, 4, out<uint8_t>(0)); }},
        {"vekI2cWrite", [] { return vekI2cWrite(1, 1, 1, 4, kInput); }},
        {"vekDDCRead", [] { return vekDDCRead(1, out<int>(0), out<uint8_t*>(1), out<int>(2)); }},
        {"vekHdmiDDCInit", [] { return vekHdmiDDCInit(1); }},
        {"vekHdmiDDCRead", [] { return vekHdmiDDCRead(1, 1, 1, out<uint8_t>(0)); }},
        {"vekHdmiDDCWrite", [] { return vekHdmiDDCWrite(1, 1, 1, 1); }},
        {"vekHdmiEDIDRead", [] { return vekHdmiEDIDRead(1); }},
        {"vekHdmiHpdSense", [] { return vekHdmiHpdSense(1, out<uint8_t>(0)); }},
        {"vekHdmiModeRead", [] { return vekHdmiModeRead(1, out<VekDisplayMode>(0)); }},
        {"vekHdmiPhyStart", [] { return vekHdmiPhyStart(1); }},
        {"vekHdmiPhyEnd", [] { return vekHdmiPhyEnd(1); }},
        {"vekHdmiPhyReset", [] { return vekHdmiPhyReset(1); }},
        {"vekHdmiPhyRead", [] { return vekHdmiPhyRead(1, 1, out<uint16_t>(0)); }},
        {"vekHdmiPhyWrite", [] { return vekHdmiPhyWrite(1, 1, 1); }},
        {"vekSpiReadBuffer", [] { return vekSpiReadBuffer(out<uint8_t>(0), 1, 4); }},
        {"vekSpiErase", [] { return vekSpiErase(1, 4); }},
        {"vekSpiProgram", [] { return vekSpiProgram(kInput, 1, 4); }},
        {"vekSpiProtect", [] { return vekSpiProtect(); }},
        {"vekSpiUnprotect", [] { return vekSpiUnprotect(); }},
        {"vekLTC2990GetCurrent2", [] { return vekLTC2990GetCurrent2(1, 0, 1, 1, out<float>(0), out<float>(1), 1, 1); }},
        {"vekLTC2990GetVolt4",
         [] { return vekLTC2990GetVolt4(1, 1, out<float>(0), out<float>(1), out<float>(2), out<float>(3), 1, 1); }},
        {"vekLTC2991GetCurrent4",
         [] {
             return vekLTC2991GetCurrent4(1, 1, 1, 1, 1, 1, out<float>(0), out<float>(1), out<float>(2), out<float>(3),
                                          1, 1);
         }},
        {"vekLTC2991GetVolt8",
         [] {
             return vekLTC2991GetVolt8(1, 1, out<float>(0), out<float>(1), out<float>(2), out<float>(3), out<float>(4),
                                       out<float>(5), out<float>(6), out<float>(7), 1, 1);
         }},
        {"vekINA3221GetVolt2", [] { return vekINA3221GetVolt2(1, out<float>(0), out<float>(1)); }},
        {"vekINA3221GetCurrent2", [] { return vekINA3221GetCurrent2(1, 1, 1, out<float>(0), out<float>(1)); }},
        {"vekDpInit", [] { return vekDpInit(1); }},
        {"vekDpLinkTraining", [] { return vekDpLinkTraining(1); }},
        {"vekDpCTLCfg", [] { return vekDpCTLCfg(1); }},
        {"vekDpModeRead", [] { return vekDpModeRead(1, out<VekDisplayMode>(0)); }},
        {"vekDpAuxRead", [] { return vekDpAuxRead(1, 1, out<uint8_t>(0)); }},
        {"vekDpAuxReadBuf", [] { return vekDpAuxReadBuf(1, 1, out<uint8_t>(0), 4); }},
        {"vekDpAuxWrite", [] { return vekDpAuxWrite(1, 1, 1); }},
        {"vekDpAuxEdidGet", [] { return vekDpAuxEdidGet(1, out<uint8_t>(0), out<int>(1)); }},
        {"vekDpI2cRead", [] { return vekDpI2cRead(1, 1, 1, out<uint8_t>(0)); }},
        {"vekDpI2cReadBuf", [] { return vekDpI2cReadBuf(1, 1, 1, out<uint8_t>(0), 4); }},
        {"vekDpCdbRead", [] { return vekDpCdbRead(1, 1, out<uint16_t>(0)); }},
        {"vekDpCdbWrite", [] { return vekDpCdbWrite(1, 1, 1); }},
        {"vekDpPhyRead", [] { return vekDpPhyRead(1, 1, out<uint32_t>(0)); }},
        {"vekDpPhyWrite", [] { return vekDpPhyWrite(1, 1, 1); }},
        {"vekEdpEnablePwm", [] { return vekEdpEnablePwm(); }},
        {"vekEdpPwmSet", [] { return vekEdpPwmSet(1); }},
        {"vekEdpLightSet", [] { return vekEdpLightSet(1); }},
        {"vekEdpSelfTestSet", [] { return vekEdpSelfTestSet(1, 1); }},
        {"do_edid_parse", [] { return do_edid_parse(nullptr); }},
        {"vekCrtcModeRead", [] { return vekCrtcModeRead(1, out<VekDisplayMode>(0)); }},
        {"vekCrtcOutputPrint", [] { return vekCrtcOutputPrint(); }},
        {"vekCrtcGammaSet", [] { return vekCrtcGammaSet("0"); }},
        {"vekVgaSetGain", [] { return vekVgaSetGain(1, 1, 1); }},
        {"vekVgaSetSigleGain", [] { return vekVgaSetSigleGain(1, 1); }},
        {"vekZoomVideoInit", [] { return vekZoomVideoInit(1, 1, 1, 1); }},
        {"vekZoomVideoStart", [] { return vekZoomVideoStart(1, 1, 1, 1, 1, 1, 1, 1, 1); }},
        {"vekZoomVideoStop", [] { return vekZoomVideoStop(1); }},
        {"vekZoomVideoRestart", [] { return vekZoomVideoRestart(1); }},
        {"vekZoomVideoGetParm",
         [] {
             return vekZoomVideoGetParm(1, out<int32_t>(0), out<int32_t>(1), out<int32_t>(2), out<int32_t>(3),
                                        out<int32_t>(4), out<int32_t>(5), out<int32_t>(6), out<int32_t>(7),
                                        out<int32_t>(8), out<int32_t>(9));
         }},
        {"vekSensorTemp", [] { return vekSensorTemp(1, out<double>(0)); }},
        {"vekSensorVolt", [] { return vekSensorVolt(1, out<double>(0)); }},
        {"vekSensorProcess", [] { return vekSensorProcess(1, 1, out<int>(0)); }},
        {"vekPowerGetState", [] { return vekPowerGetState(out<int>(0)); }},
        {"vekPowerSetState", [] { return vekPowerSetState(1); }},
        {"vekFanSetRate", [] { return vekFanSetRate(1); }},
        {"vekThermalDebug", [] { return vekThermalDebug(1); }},
        {"tovira_func", [] { return tovira_func(out<char>(0), 1); }},
        {"vek_qz200_get_freq", [] { return vek_qz200_get_freq(1); }},
        {"vek_qz200_pllcalc", [] { return vek_qz200_pllcalc(1, 1, 1, out<uint32_t>(0)); }},
        {"vek_qz200_set_clk_freq", [] { return vek_qz200_set_clk_freq(1, 1); }},
        {"vek_qz200_set_clk_mode", [] { return vek_qz200_set_clk_mode(1, 1); }},
        {"vekSetCard", [] { return vekSetCard(1); }},
        {"vekQueryInt", [] { return vekQueryInt(1, out<int>(0), 1); }},
        {"vekQueryInfo", [] { return vekQueryInfo("0", out<char>(0)); }},
        {"vekDumpVramFree", [] { return vekDumpVramFree(); }},
        {"vekRvtcoreVer", [] { return vekRvtcoreVer(out<int>(0), out<int>(1), out<int>(2), out<int>(3)); }},
        {"vekInfoRead", [] { return vekInfoRead(out<gpu_info>(0)); }},
        {"vekMonitorAxiTrans_QZ201", [] { return vekMonitorAxiTrans_QZ201(); }},
    };
    return calls;
}

/** Functions that need no card; their own tests say what they do without one. */
const std::set<std::string> kNeedNoCard = {
    "doGetDeviceId",           "dump_vram",  "edid_print_helper", "get_device_id", "vekClose",
    "vekI2cErrString",         "vekMemOpen", "vekPowerStateName", "vekRwOpen",     "vekSerialOpen",
    "vek_thread_qz202monitor",
};

class NoPath : public testing::Test
{
protected:
    NoPath() { vekClose(); }
    ~NoPath() override { vekClose(); }
};

TEST_F(NoPath, EveryFunctionOfTheLibraryIsLookedAt)
{
    std::set<std::string> names = kNeedNoCard;
    for (const Call& call : cardCalls()) {
        EXPECT_TRUE(names.insert(call.name).second) << call.name;
    }
    EXPECT_EQ(names, declaredFunctions());
}

TEST_F(NoPath, EveryAccessAnswersSoAndTouchesNothing)
{
    for (const Call& call : cardCalls()) {
        EXPECT_EQ(callWithoutTrace(call), VEK_NO_PATH) << call.name;
    }
}

TEST_F(NoPath, TheCollectorThreadEndsAtOnce)
{
    char folder[] = "000";
    EXPECT_EQ(vek_thread_qz202monitor(folder), nullptr);
    EXPECT_EQ(vek_thread_qz202monitor(nullptr), nullptr);
}

TEST_F(NoPath, TextsAreThereForAnyValue)
{
    for (const int value : {0, 1, 2, 3, -1, -6, -19, -110, 0x7fffffff, -0x7fffffff - 1}) {
        for (const char* text : {vekI2cErrString(value), vekPowerStateName(value)}) {
            ASSERT_NE(text, nullptr);
            EXPECT_NE(std::string(text), "");
        }
    }
}

}  // namespace
