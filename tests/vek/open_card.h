/**
 * @file open_card.h
 * Fixtures that hold a card open for the length of a test.
 */
#ifndef OPEN_CARD_H
#define OPEN_CARD_H

#include <gtest/gtest.h>

#include "vek.h"

/** The first card, a QZ201. */
class FirstCard : public testing::Test
{
protected:
    FirstCard() { EXPECT_GE(vekRwOpen(0), 0); }
    ~FirstCard() override { vekClose(); }
};

/** Either card by its index. */
class EitherCard : public testing::TestWithParam<int>
{
protected:
    EitherCard() { EXPECT_GE(vekRwOpen(GetParam()), 0); }
    ~EitherCard() override { vekClose(); }
};

#endif
