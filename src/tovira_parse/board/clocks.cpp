// The clocks: frequencies of the domains, and bypass and off switches of PLLs and cores.

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "tovira_parse/handlers.h"
#include "tovira_parse/numbers.h"
#include "tovira_parse/text.h"
#include "util_cmd.h"
#include "vek.h"

namespace
{

constexpr int kReferenceKhz = 27000;
constexpr int kIntegerDividers = 1;
constexpr std::uint32_t kKhzPerMhz = 1000;
// The number given for APB counts steps of 8 MHz, though what is shown is in MHz.
constexpr std::uint32_t kKhzPerApbStep = 8000;

// A domain with a keyword, and its name in each of the three texts about it.
struct Domain {
    std::string_view keyword;
    int number;  ///< enum VekClockDomain
    std::uint32_t khzPerUnit;
    const char* shown;
    const char* set;
    const char* refused;
};

constexpr Domain kDomains[] = {
    {"AXI", VEK_CLOCK_AXI, kKhzPerMhz, "axi", "axi", "axi"},
    {"NOC", VEK_CLOCK_AXI, kKhzPerMhz, "axi", "axi", "axi"},
    {"APB", VEK_CLOCK_APB, kKhzPerApbStep, "apb", "apb", "apb"},
    {"PCIE", VEK_CLOCK_VPU, kKhzPerMhz, "pcie/vpu", "pcie/vpu", "pcie/vpu"},
    {"VPU", VEK_CLOCK_VPU, kKhzPerMhz, "pcie/vpu", "pcie/vpu", "pcie/vpu"},
    {"3D", VEK_CLOCK_3D, kKhzPerMhz, "3d", "3d core", "3d core"},
    {"3DSH", VEK_CLOCK_3D_SHADER, kKhzPerMhz, "3dsh", "3d sh", "3dsh"},
    {"2D", VEK_CLOCK_2D, kKhzPerMhz, "2d", "2d", "2d"},
};

int showAllFrequencies()
{
    const int axi = vek_qz200_get_freq(VEK_CLOCK_AXI);
    const int apb = vek_qz200_get_freq(VEK_CLOCK_APB);
    const int pcie = vek_qz200_get_freq(VEK_CLOCK_PCIE);
    const int vpu = vek_qz200_get_freq(VEK_CLOCK_VPU);
    const int core3d = vek_qz200_get_freq(VEK_CLOCK_3D);
    const int core2d = vek_qz200_get_freq(VEK_CLOCK_2D);
    const int shader = vek_qz200_get_freq(VEK_CLOCK_3D_SHADER);
    const int ddr = vek_qz200_get_freq(VEK_CLOCK_DDR);
    printf(
        "axi frequency: %dMHz\n"
        "apb frequency: %dMHz\n"
        "pcie frequency: %dMHz\n"
        "vpu frequency: %dMHz\n"
        "3d frequency: %dMHz\n"
        "2d frequency: %dMHz\n"
        "3dsh frequency: %dMHz\n"
        "ddr frequency: %dMHz\n",
        axi, apb, pcie, vpu, core3d, core2d, shader, ddr);
    return kStatusDone;
}

int showOrSetFrequency(const Domain& domain, const char* typed)
{
    if (typed == nullptr) {
        printf("%s frequency: %dMHz\n", domain.shown, vek_qz200_get_freq(domain.number));
        return kStatusDone;
    }
    const std::uint32_t wantedKhz = static_cast<std::uint32_t>(itoi(typed)) * domain.khzPerUnit;
    std::uint32_t setting = 0;
    if (vek_qz200_pllcalc(kReferenceKhz, kIntegerDividers, wantedKhz, &setting) != 0) {
        printf("the input %s frequency out of range, please set again\n", domain.refused);
        return kStatusDone;
    }
    vek_qz200_set_clk_freq(domain.number, setting);
    printf("new %s frequency: %dMHz\n", domain.set, vek_qz200_get_freq(domain.number));
    return kStatusDone;
}

int listSources()
{
    puts(
        "DEVPLL -1-  -link to AUX/NOC、AHB、APB -operate bypass or off be careful\n"
        "DEV2PPL -2- -link to PCIE、VPU -operate bypass or off be careful\n"
        "GPUPLL -3- -link to 3D、2D -support bypass and off\n"
        "GPU2PLL -4- -link to 3D -support bypass and off\n"
        "3DCORE -5- -control 3D core -support bypass and off\n"
        "2DCORE -6- -control 2D core -support bypass and off");
    return kStatusDone;
}

struct ModeKeyword {
    std::string_view keyword;
    int mode;  ///< enum VekClockMode
};

constexpr ModeKeyword kModeKeywords[] = {{"BYPASS", VEK_CLOCK_BYPASS}, {"OFF", VEK_CLOCK_OFF}, {"ON", VEK_CLOCK_ON}};

int setMode(int mode, const char* source)
{
    if (source == nullptr) {
        return kStatusBadArgument;
    }
    vek_qz200_set_clk_mode(mode, static_cast<std::int32_t>(itoi(source)));
    return kStatusDone;
}

}  // namespace

int doClk(char* cmdText, int /*repeat*/)
{
    Tokens tokens{cmdText};
    tokens.word();
    char* const token = tokens.word();
    if (token == nullptr) {
        return showAllFrequencies();
    }
    upperCase(token);
    const std::string_view keyword = token;
    for (const Domain& domain : kDomains) {
        if (keyword == domain.keyword) {
            return showOrSetFrequency(domain, tokens.word());
        }
    }
    if (keyword == "PLL") {
        return listSources();
    }
    for (const ModeKeyword& mode : kModeKeywords) {
        if (keyword == mode.keyword) {
            return setMode(mode.mode, tokens.word());
        }
    }
    return kStatusDone;
}
