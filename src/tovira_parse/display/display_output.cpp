#include "tovira_parse/display/display_output.h"

#include <cstdio>

void printRunItem(const RegisterRunLayout& layout, int index, std::uint32_t address, std::uint32_t value)
{
    if (index % layout.itemsPerLine != 0) {
        printf(" %0*x", layout.digits, value);
        return;
    }
    printf("%s%0*x: %0*x", index == 0 ? "" : "\n", layout.addressDigits, address, layout.digits, value);
}

void printDisplayMode(const char* output, int channel, const VekDisplayMode& mode)
{
    printf(
        "%s-%d:\n"
        " clock = %dkHz \n"
        " hdisplay = %d \n"
        " hsync_start = %d \n"
        " hsync_end = %d \n"
        " htotal = %d \n"
        " vdisplay = %d \n"
        " vsync_start = %d \n"
        " vsync_end = %d \n"
        " vtotal = %d \n",
        output, channel, mode.clock, mode.hdisplay, mode.hsync_start, mode.hsync_end, mode.htotal, mode.vdisplay,
        mode.vsync_start, mode.vsync_end, mode.vtotal);
}
