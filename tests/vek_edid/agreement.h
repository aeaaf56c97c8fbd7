/**
 * @file agreement.h
 * Holds the decoder's text against that of the program edid-decode.
 */
#ifndef AGREEMENT_H
#define AGREEMENT_H

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "decoded.h"
#include "edid_builder.h"

/** Tests that need edid-decode; they are skipped where it is not installed. */
class Agreement : public testing::Test
{
protected:
    void SetUp() override;
};

/** Runs edid-decode with an EDID at its standard input. @param options its command line */
std::string referenceOutput(const edid_builder::Bytes& edid, const std::vector<std::string>& options = {});

/** Decodes an EDID both ways and expects the same facts and timings, whatever the order of facts' names.
    @param leastTimings timings that must have been compared, so that no comparison passes on nothing */
void expectAgreement(const edid_builder::Bytes& edid, std::size_t leastTimings);

/** Expects two timings to agree, rounding aside. @param clockToleranceMhz how far the pixel clocks may lie apart */
void expectSameTiming(const DecodedTiming& ours, const DecodedTiming& reference, double clockToleranceMhz = 0.0006);

#endif
