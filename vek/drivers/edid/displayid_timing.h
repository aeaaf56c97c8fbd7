#ifndef VEK_DRIVERS_EDID_DISPLAYID_TIMING_H
#define VEK_DRIVERS_EDID_DISPLAYID_TIMING_H

#include "drivers/edid/bytes.h"
#include "drivers/edid/context.h"

namespace vek::edid
{

constexpr std::size_t kLongTimingSize = 20;
constexpr std::size_t kFormulaTimingSize = 6;

/// A kind of detailed timing of 20 bytes.
struct LongTimingKind {
    unsigned clockUnitKhz;
    const char* topOption;  ///< Meaning of the top option bit.
};
constexpr LongTimingKind kType1{10, "preferred"};        ///< DisplayID 1.3, section 4.4.1.
constexpr LongTimingKind kType7{1, "preferred"};         ///< DisplayID 2.0, section 4.3.
constexpr LongTimingKind kType7InCta{1, "YCbCr 4:2:0"};  ///< Type VII in a CTA-861 extension.

void printLongTiming(Report& report, const char* name, Bytes descriptor, const LongTimingKind& kind);

/// Prints a detailed timing of type II (DisplayID 1.3, section 4.4.2), 11 bytes.
void printShortDetailedTiming(Report& report, const char* name, Bytes descriptor);

/// Prints a short timing of type III (DisplayID 1.3, section 4.4.3), 3 bytes.
void printShortTiming(Report& report, const char* name, Bytes descriptor);

/// Prints a formula-based timing of 6 or 7 bytes: type IX and type X of DisplayID 2.0.
void printFormulaTiming(Report& report, const char* name, Bytes descriptor);

}  // namespace vek::edid

#endif
