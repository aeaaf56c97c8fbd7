#ifndef VEK_DRIVERS_EDID_STANDARD_TIMING_H
#define VEK_DRIVERS_EDID_STANDARD_TIMING_H

#include "drivers/edid/bytes.h"
#include "drivers/edid/context.h"

namespace vek::edid
{

/// Prints a DMT mode; an id that is not assigned is named as such.
void printDmt(Report& report, unsigned id);

/// Prints two-byte standard timing codes (E-EDID 1.4, section 3.9); unused ones are left out.
void printStandardTimings(Context& context, Bytes codes);

/// Prints the established timings I and II and the manufacturer's (E-EDID 1.4, section 3.8). @param bits three bytes
void printEstablishedTimings(Report& report, Bytes bits);

/// Prints the established timings III (E-EDID 1.4, section 3.10.3.9). @param bits six bytes
void printEstablishedTimings3(Report& report, Bytes bits);

/// Prints a CVT 3-byte code (E-EDID 1.4, section 3.10.3.8): a line for each of its refresh rates.
void printCvtCode(Report& report, Bytes code);

}  // namespace vek::edid

#endif
