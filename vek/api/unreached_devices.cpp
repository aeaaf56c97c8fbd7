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
