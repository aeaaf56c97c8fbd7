#include "api/connection.h"
#include "vek.h"

// The functions of the devices that no access path reaches yet.

namespace vek
{
namespace
{

/// What a function answers whose device no path reaches.
int unreached()
{
    return openPath == nullptr ? VEK_NO_PATH : VEK_NOT_AVAILABLE;
}

}  // namespace
}  // namespace vek

int vekSetCard(int /*card*/)
{
    return vek::unreached();
}

int vekQueryInt(int /*item*/, int* /*value*/, int /*card*/)
{
    return vek::unreached();
}

int vekQueryInfo(const char* /*keyword*/, char* /*report*/)
{
    return vek::unreached();
}

int vekDumpVramFree()
{
    return vek::unreached();
}

int vekDpInit(int /*channel*/)
{
    return vek::unreached();
}

int vekDpLinkTraining(int /*channel*/)
{
    return vek::unreached();
}

int vekDpCTLCfg(int /*channel*/)
{
    return vek::unreached();
}

int vekDpModeRead(int /*channel*/, VekDisplayMode* /*mode*/)
{
    return vek::unreached();
}

int vekDpAuxRead(int /*channel*/, uint32_t /*address*/, uint8_t* /*value*/)
{
    return vek::unreached();
}

int vekDpAuxReadBuf(int /*channel*/, uint32_t /*address*/, uint8_t* /*buffer*/, int /*count*/)
{
    return vek::unreached();
}

int vekDpAuxWrite(int /*channel*/, uint32_t /*address*/, uint8_t /*value*/)
{
    return vek::unreached();
}

int vekDpAuxEdidGet(int /*channel*/, uint8_t* /*buffer*/, int* /*length*/)
{
    return vek::unreached();
}

int vekDpI2cRead(int /*channel*/, uint32_t /*device*/, uint8_t /*sub_address*/, uint8_t* /*value*/)
{
    return vek::unreached();
}

int vekDpI2cReadBuf(int /*channel*/, uint32_t /*device*/, uint8_t /*sub_address*/, uint8_t* /*buffer*/, int /*count*/)
{
    return vek::unreached();
}

int vekDpCdbRead(int /*channel*/, uint32_t /*address*/, uint16_t* /*value*/)
{
    return vek::unreached();
}

int vekDpCdbWrite(int /*channel*/, uint32_t /*address*/, uint16_t /*value*/)
{
    return vek::unreached();
}

int vekDpPhyRead(int /*channel*/, uint32_t /*address*/, uint32_t* /*value*/)
{
    return vek::unreached();
}

int vekDpPhyWrite(int /*channel*/, uint32_t /*address*/, uint32_t /*value*/)
{
    return vek::unreached();
}

int vekEdpEnablePwm()
{
    return vek::unreached();
}

int vekEdpPwmSet(int /*frequency_hz*/)
{
    return vek::unreached();
}

int vekEdpLightSet(int /*percent*/)
{
    return vek::unreached();
}

int vekEdpSelfTestSet(int /*channel*/, uint8_t /*state*/)
{
    return vek::unreached();
}

int vekSpiReadBuffer(void* /*buffer*/, int /*address*/, int /*size*/)
{
    return vek::unreached();
}

int vekSpiErase(int /*address*/, int /*size*/)
{
    return vek::unreached();
}

int vekSpiProgram(const void* /*buffer*/, int /*address*/, int /*size*/)
{
    return vek::unreached();
}

int vekSpiProtect()
{
    return vek::unreached();
}

int vekSpiUnprotect()
{
    return vek::unreached();
}

int vekLTC2990GetCurrent2(int /*channel*/, int /*address_index*/, unsigned int /*rsense1*/, unsigned int /*rsense2*/,
                          float* /*current1*/, float* /*current2*/, int /*repeated*/, int /*wait_ready*/)
{
    return vek::unreached();
}

int vekLTC2990GetVolt4(int /*channel*/, int /*address_index*/, float* /*v1*/, float* /*v2*/, float* /*v3*/,
                       float* /*v4*/, int /*repeated*/, int /*wait_ready*/)
{
    return vek::unreached();
}

int vekLTC2991GetCurrent4(int /*channel*/, int /*address_index*/, unsigned int /*rsense1*/, unsigned int /*rsense2*/,
                          unsigned int /*rsense3*/, unsigned int /*rsense4*/, float* /*current1*/, float* /*current2*/,
                          float* /*current3*/, float* /*current4*/, int /*repeated*/, int /*wait_ready*/)
{
    return vek::unreached();
}

int vekLTC2991GetVolt8(int /*channel*/, int /*address_index*/, float* /*v1*/, float* /*v2*/, float* /*v3*/,
                       float* /*v4*/, float* /*v5*/, float* /*v6*/, float* /*v7*/, float* /*v8*/, int /*repeated*/,
                       int /*wait_ready*/)
{
    return vek::unreached();
}

int vekINA3221GetVolt2(int /*channel*/, float* /*millivolts1*/, float* /*millivolts2*/)
{
    return vek::unreached();
}

int vekINA3221GetCurrent2(int /*channel*/, unsigned int /*rsense1*/, unsigned int /*rsense2*/, float* /*current1*/,
                          float* /*current2*/)
{
    return vek::unreached();
}

int vekRvtcoreVer(int* /*major*/, int* /*minor*/, int* /*third*/, int* /*fourth*/)
{
    return vek::unreached();
}

int vekInfoRead(gpu_info* /*info*/)
{
    return vek::unreached();
}

int vekMonitorAxiTrans_QZ201()
{
    return vek::unreached();
}

void* vek_thread_qz202monitor(void* /*folder_name*/)
{
    return nullptr;
}
