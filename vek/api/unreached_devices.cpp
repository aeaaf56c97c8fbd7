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
