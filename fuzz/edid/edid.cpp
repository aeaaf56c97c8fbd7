// The EDID decoder: any bytes must be decoded to an end, and what is said of them must fit together.

#include <cstdio>
#include <span>

#include "drivers/edid/edid.h"
#include "support/require.h"

using fuzz::require;

namespace
{

std::FILE* sink()
{
    static std::FILE* const kSink = std::fopen("/dev/null", "w");
    return kSink;
}

void checkMode(std::span<const std::uint8_t> edid)
{
    VekDisplayMode mode{};
    if (!vek::preferredTiming(edid, mode)) {
        require(mode.clock == 0 && mode.htotal == 0);
        return;
    }
    require(mode.clock > 0 && mode.hdisplay > 0 && mode.vdisplay > 0);
    require(mode.hdisplay <= mode.hsync_start && mode.hsync_start < mode.hsync_end && mode.hsync_end <= mode.htotal);
    require(mode.vdisplay <= mode.vsync_start && mode.vsync_start < mode.vsync_end && mode.vsync_end <= mode.vtotal);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::span<const std::uint8_t> edid(data, size);
    const vek::EdidVerdict verdict = vek::checkEdid(edid);
    require(verdict.wholeBlocks == size / 128 && verdict.declaredBlocks >= 1 && verdict.declaredBlocks <= 256);
    vek::printEdid(sink(), edid, true);
    checkMode(edid);
    return 0;
}
