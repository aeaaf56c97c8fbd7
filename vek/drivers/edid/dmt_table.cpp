#include "drivers/edid/dmt_table.h"

#include <algorithm>
#include <array>

namespace vek::edid
{
namespace
{

struct Row {
    unsigned id;
    unsigned standardCode;  // 0 when the mode has none
    Timing timing;
};

// In ascending order of ids. Each axis: active, front porch, sync, back porch, border, positive sync.
constexpr auto kDmts = std::to_array<Row>({
    {0x01, 0, {31500, {640, 32, 64, 96, 0, true}, {350, 32, 3, 60, 0, false}, Scan::kProgressive, {64, 35}}},
    {0x02, 0x3119, {31500, {640, 32, 64, 96, 0, false}, {400, 1, 3, 41, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x03, 0, {35500, {720, 36, 72, 108, 0, false}, {400, 1, 3, 42, 0, true}, Scan::kProgressive, {9, 5}}},
    {0x04, 0x3140, {25175, {640, 8, 96, 40, 8, false}, {480, 2, 2, 25, 8, false}, Scan::kProgressive, {4, 3}}},
    {0x05, 0x314C, {31500, {640, 16, 40, 120, 8, false}, {480, 1, 3, 20, 8, false}, Scan::kProgressive, {4, 3}}},
    {0x06, 0x314F, {31500, {640, 16, 64, 120, 0, false}, {480, 1, 3, 16, 0, false}, Scan::kProgressive, {4, 3}}},
    {0x07, 0x3159, {36000, {640, 56, 56, 80, 0, false}, {480, 1, 3, 25, 0, false}, Scan::kProgressive, {4, 3}}},
    {0x08, 0, {36000, {800, 24, 72, 128, 0, true}, {600, 1, 2, 22, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x09, 0x4540, {40000, {800, 40, 128, 88, 0, true}, {600, 1, 4, 23, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x0A, 0x454C, {50000, {800, 56, 120, 64, 0, true}, {600, 37, 6, 23, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x0B, 0x454F, {49500, {800, 16, 80, 160, 0, true}, {600, 1, 3, 21, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x0C, 0x4559, {56250, {800, 32, 64, 152, 0, true}, {600, 1, 3, 27, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x0D, 0, {73250, {800, 48, 32, 80, 0, true}, {600, 3, 4, 29, 0, false}, Scan::kProgressive, {4, 3}, true}},
    {0x0E, 0, {33750, {848, 16, 112, 112, 0, true}, {480, 6, 8, 23, 0, true}, Scan::kProgressive, {16, 9}}},
    {0x0F, 0, {44900, {1024, 8, 176, 56, 0, true}, {384, 0, 4, 20, 0, true}, Scan::kInterlaced, {4, 3}}},
    {0x10, 0x6140, {65000, {1024, 24, 136, 160, 0, false}, {768, 3, 6, 29, 0, false}, Scan::kProgressive, {4, 3}}},
    {0x11, 0x614C, {75000, {1024, 24, 136, 144, 0, false}, {768, 3, 6, 29, 0, false}, Scan::kProgressive, {4, 3}}},
    {0x12, 0x614F, {78750, {1024, 16, 96, 176, 0, true}, {768, 1, 3, 28, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x13, 0x6159, {94500, {1024, 48, 96, 208, 0, true}, {768, 1, 3, 36, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x14, 0, {115500, {1024, 48, 32, 80, 0, true}, {768, 3, 4, 38, 0, false}, Scan::kProgressive, {4, 3}, true}},
    {0x15, 0x714F, {108000, {1152, 64, 128, 256, 0, true}, {864, 1, 3, 32, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x16, 0, {68250, {1280, 48, 32, 80, 0, true}, {768, 3, 7, 12, 0, false}, Scan::kProgressive, {5, 3}, true}},
    {0x17, 0, {79500, {1280, 64, 128, 192, 0, false}, {768, 3, 7, 20, 0, true}, Scan::kProgressive, {5, 3}}},
    {0x18, 0, {102250, {1280, 80, 128, 208, 0, false}, {768, 3, 7, 27, 0, true}, Scan::kProgressive, {5, 3}}},
    {0x19, 0, {117500, {1280, 80, 136, 216, 0, false}, {768, 3, 7, 31, 0, true}, Scan::kProgressive, {5, 3}}},
    {0x1A, 0, {140250, {1280, 48, 32, 80, 0, true}, {768, 3, 7, 35, 0, false}, Scan::kProgressive, {5, 3}}},
    {0x1B, 0, {71000, {1280, 48, 32, 80, 0, true}, {800, 3, 6, 14, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x1C, 0x8100, {83500, {1280, 72, 128, 200, 0, false}, {800, 3, 6, 22, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x1D, 0x810F, {106500, {1280, 80, 128, 208, 0, false}, {800, 3, 6, 29, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x1E, 0x8119, {122500, {1280, 80, 136, 216, 0, false}, {800, 3, 6, 34, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x1F, 0, {146250, {1280, 48, 32, 80, 0, true}, {800, 3, 6, 38, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x20, 0x8140, {108000, {1280, 96, 112, 312, 0, true}, {960, 1, 3, 36, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x21, 0x8159, {148500, {1280, 64, 160, 224, 0, true}, {960, 1, 3, 47, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x22, 0, {175500, {1280, 48, 32, 80, 0, true}, {960, 3, 4, 50, 0, false}, Scan::kProgressive, {4, 3}, true}},
    {0x23, 0x8180, {108000, {1280, 48, 112, 248, 0, true}, {1024, 1, 3, 38, 0, true}, Scan::kProgressive, {5, 4}}},
    {0x24, 0x818F, {135000, {1280, 16, 144, 248, 0, true}, {1024, 1, 3, 38, 0, true}, Scan::kProgressive, {5, 4}}},
    {0x25, 0x8199, {157500, {1280, 64, 160, 224, 0, true}, {1024, 1, 3, 44, 0, true}, Scan::kProgressive, {5, 4}}},
    {0x26, 0, {187250, {1280, 48, 32, 80, 0, true}, {1024, 3, 7, 50, 0, false}, Scan::kProgressive, {5, 4}, true}},
    {0x27, 0, {85500, {1360, 64, 112, 256, 0, true}, {768, 3, 6, 18, 0, true}, Scan::kProgressive, {85, 48}}},
    {0x28, 0, {148250, {1360, 48, 32, 80, 0, true}, {768, 3, 5, 37, 0, false}, Scan::kProgressive, {85, 48}, true}},
    {0x29, 0, {101000, {1400, 48, 32, 80, 0, true}, {1050, 3, 4, 23, 0, false}, Scan::kProgressive, {4, 3}, true}},
    {0x2A, 0x9040, {121750, {1400, 88, 144, 232, 0, false}, {1050, 3, 4, 32, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x2B, 0x904F, {156000, {1400, 104, 144, 248, 0, false}, {1050, 3, 4, 42, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x2C, 0x9059, {179500, {1400, 104, 152, 256, 0, false}, {1050, 3, 4, 48, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x2D, 0, {208000, {1400, 48, 32, 80, 0, true}, {1050, 3, 4, 55, 0, false}, Scan::kProgressive, {4, 3}, true}},
    {0x2E, 0, {88750, {1440, 48, 32, 80, 0, true}, {900, 3, 6, 17, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x2F, 0x9500, {106500, {1440, 80, 152, 232, 0, false}, {900, 3, 6, 25, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x30, 0x950F, {136750, {1440, 96, 152, 248, 0, false}, {900, 3, 6, 33, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x31, 0x9519, {157000, {1440, 104, 152, 256, 0, false}, {900, 3, 6, 39, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x32, 0, {182750, {1440, 48, 32, 80, 0, true}, {900, 3, 6, 44, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x33, 0xA940, {162000, {1600, 64, 192, 304, 0, true}, {1200, 1, 3, 46, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x34, 0xA945, {175500, {1600, 64, 192, 304, 0, true}, {1200, 1, 3, 46, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x35, 0xA94A, {189000, {1600, 64, 192, 304, 0, true}, {1200, 1, 3, 46, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x36, 0xA94F, {202500, {1600, 64, 192, 304, 0, true}, {1200, 1, 3, 46, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x37, 0xA959, {229500, {1600, 64, 192, 304, 0, true}, {1200, 1, 3, 46, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x38, 0, {268250, {1600, 48, 32, 80, 0, true}, {1200, 3, 4, 64, 0, false}, Scan::kProgressive, {4, 3}, true}},
    {0x39, 0, {119000, {1680, 48, 32, 80, 0, true}, {1050, 3, 6, 21, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x3A, 0xB300, {146250, {1680, 104, 176, 280, 0, false}, {1050, 3, 6, 30, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x3B, 0xB30F, {187000, {1680, 120, 176, 296, 0, false}, {1050, 3, 6, 40, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x3C, 0xB319, {214750, {1680, 128, 176, 304, 0, false}, {1050, 3, 6, 46, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x3D, 0, {245500, {1680, 48, 32, 80, 0, true}, {1050, 3, 6, 53, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x3E, 0xC140, {204750, {1792, 128, 200, 328, 0, false}, {1344, 1, 3, 46, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x3F, 0xC14F, {261000, {1792, 96, 216, 352, 0, false}, {1344, 1, 3, 69, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x40, 0, {333250, {1792, 48, 32, 80, 0, true}, {1344, 3, 4, 72, 0, false}, Scan::kProgressive, {4, 3}, true}},
    {0x41, 0xC940, {218250, {1856, 96, 224, 352, 0, false}, {1392, 1, 3, 43, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x42, 0xC94F, {288000, {1856, 128, 224, 352, 0, false}, {1392, 1, 3, 104, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x43, 0, {356500, {1856, 48, 32, 80, 0, true}, {1392, 3, 4, 74, 0, false}, Scan::kProgressive, {4, 3}, true}},
    {0x44, 0, {154000, {1920, 48, 32, 80, 0, true}, {1200, 3, 6, 26, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x45, 0xD100, {193250, {1920, 136, 200, 336, 0, false}, {1200, 3, 6, 36, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x46, 0xD10F, {245250, {1920, 136, 208, 344, 0, false}, {1200, 3, 6, 46, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x47, 0xD119, {281250, {1920, 144, 208, 352, 0, false}, {1200, 3, 6, 53, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x48, 0, {317000, {1920, 48, 32, 80, 0, true}, {1200, 3, 6, 62, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x49, 0xD140, {234000, {1920, 128, 208, 344, 0, false}, {1440, 1, 3, 56, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x4A, 0xD14F, {297000, {1920, 144, 224, 352, 0, false}, {1440, 1, 3, 56, 0, true}, Scan::kProgressive, {4, 3}}},
    {0x4B, 0, {380500, {1920, 48, 32, 80, 0, true}, {1440, 2, 3, 78, 0, false}, Scan::kProgressive, {4, 3}, true}},
    {0x4C, 0, {268500, {2560, 48, 32, 80, 0, true}, {1600, 3, 6, 37, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x4D, 0, {348500, {2560, 192, 280, 472, 0, false}, {1600, 3, 6, 49, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x4E, 0, {443250, {2560, 208, 280, 488, 0, false}, {1600, 3, 6, 63, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x4F, 0, {505250, {2560, 208, 280, 488, 0, false}, {1600, 3, 6, 73, 0, true}, Scan::kProgressive, {16, 10}}},
    {0x50, 0, {552750, {2560, 48, 32, 80, 0, true}, {1600, 3, 6, 85, 0, false}, Scan::kProgressive, {16, 10}, true}},
    {0x51, 0, {85500, {1366, 70, 143, 213, 0, true}, {768, 3, 3, 24, 0, true}, Scan::kProgressive, {85, 48}}},
    {0x52, 0xD1C0, {148500, {1920, 88, 44, 148, 0, true}, {1080, 4, 5, 36, 0, true}, Scan::kProgressive, {16, 9}}},
    {0x53, 0xA9C0, {108000, {1600, 24, 80, 96, 0, true}, {900, 1, 3, 96, 0, true}, Scan::kProgressive, {16, 9}, true}},
    {0x54, 0xE1C0, {162000, {2048, 26, 80, 96, 0, true}, {1152, 1, 3, 44, 0, true}, Scan::kProgressive, {16, 9}, true}},
    {0x55, 0x81C0, {74250, {1280, 110, 40, 220, 0, true}, {720, 5, 5, 20, 0, true}, Scan::kProgressive, {16, 9}}},
    {0x56, 0, {72000, {1366, 14, 56, 64, 0, true}, {768, 1, 3, 28, 0, true}, Scan::kProgressive, {85, 48}, true}},
    {0x57, 0, {556744, {4096, 8, 32, 40, 0, true}, {2160, 48, 8, 6, 0, false}, Scan::kProgressive, {256, 135}, true}},
    {0x58, 0, {556188, {4096, 8, 32, 40, 0, true}, {2160, 48, 8, 6, 0, false}, Scan::kProgressive, {256, 135}, true}},
});

}  // namespace

const Timing* findDmt(unsigned id)
{
    const auto* found = std::lower_bound(kDmts.begin(), kDmts.end(), id,
                                         [](const Row& row, unsigned wanted) { return row.id < wanted; });
    return found != kDmts.end() && found->id == id ? &found->timing : nullptr;
}

unsigned dmtOfStandardCode(unsigned code)
{
    const auto* found =
        std::find_if(kDmts.begin(), kDmts.end(), [code](const Row& row) { return row.standardCode == code; });
    return code != 0 && found != kDmts.end() ? found->id : 0;
}

}  // namespace vek::edid
