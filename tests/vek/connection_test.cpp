#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "captured_output.h"
#include "vek.h"

namespace
{

class Connection : public testing::Test
{
protected:
    ~Connection() override { vekClose(); }
};

TEST_F(Connection, IsClosedAtFirstAndAfterClose)
{
    EXPECT_EQ(get_s_type(), VEK_NO_PATH);
    EXPECT_EQ(vekGetCard(), VEK_NO_PATH);
    ASSERT_GE(vekRwOpen(0), 0);
    EXPECT_GE(vekClose(), 0);
    EXPECT_EQ(get_s_type(), VEK_NO_PATH);
    EXPECT_GE(vekClose(), 0);
}

TEST_F(Connection, OpensEitherCardThroughTheDriver)
{
    for (const int card : {0, 1}) {
        ASSERT_GE(vekRwOpen(card), 0);
        EXPECT_EQ(get_s_type(), VEK_ACCESS_DRIVER);
        EXPECT_EQ(vekGetCard(), card);
    }
}

TEST_F(Connection, RefusesAbsentCardsAndKeepsTheOpenOne)
{
    for (const int card : {2, 3, 4, -1, 0x7fffffff, -0x7fffffff}) {
        EXPECT_LT(vekRwOpen(card), 0) << card;
        EXPECT_EQ(get_s_type(), VEK_NO_PATH);
    }
    ASSERT_GE(vekRwOpen(1), 0);
    EXPECT_LT(vekRwOpen(2), 0);
    EXPECT_EQ(vekGetCard(), 1);
    EXPECT_EQ(get_s_type(), VEK_ACCESS_DRIVER);
}

TEST_F(Connection, OpensNoSerialLineWhereThereIsNone)
{
    EXPECT_EQ(vekSerialOpen("/dev/null", 9600), VEK_IO_ERROR);
    EXPECT_EQ(vekSerialOpen("/nowhere", 9600), VEK_IO_ERROR);
    for (const int rate : {0, -1, 1200, 9601, 57600, 921600}) {
        EXPECT_EQ(vekSerialOpen("/nowhere", rate), VEK_BAD_ARGUMENT) << rate;
    }
    EXPECT_EQ(vekSerialOpen(nullptr, 9600), VEK_BAD_ARGUMENT);
    EXPECT_EQ(get_s_type(), VEK_NO_PATH);
    ASSERT_GE(vekRwOpen(1), 0);
    EXPECT_LT(vekSerialOpen("/dev/null", 9600), 0);
    EXPECT_EQ(vekGetCard(), 1) << "what was open stays open";
}

TEST_F(Connection, KeepsEachCardsStateOverACloseAndApartFromTheOther)
{
    ASSERT_GE(vekRwOpen(0), 0);
    EXPECT_EQ(vekRegWriteLong(0x700, 0x11111111), 0);
    ASSERT_GE(vekRwOpen(1), 0);
    EXPECT_EQ(vekRegWriteLong(0x700, 0x22222222), 0);
    vekClose();
    ASSERT_GE(vekRwOpen(0), 0);
    uint32_t value = 0;
    EXPECT_EQ(vekRegReadLong(0x700, &value), 0);
    EXPECT_EQ(value, 0x11111111U);
}

// One test, since an id once set stays set for the rest of the process.
TEST_F(Connection, ReportsTheChipUnlessAnIdIsSet)
{
    CapturedError error;
    EXPECT_EQ(get_device_id(), 0U);
    EXPECT_LT(doGetDeviceId("tool", nullptr), 0);
    EXPECT_EQ(get_device_id(), 0U) << "an unknown type sets nothing";
    ASSERT_GE(vekRwOpen(0), 0);
    EXPECT_EQ(get_device_id(), 0x201U);
    ASSERT_GE(vekRwOpen(1), 0);
    EXPECT_EQ(get_device_id(), 0x202U);
    ASSERT_EQ(vekSetCard(0), VEK_OK);
    EXPECT_EQ(get_device_id(), 0x201U) << "it follows the selected card";
    ASSERT_EQ(vekSetCard(1), VEK_OK);
    EXPECT_EQ(get_device_id(), 0x202U);
    error.take();

    const struct {
        const char* type;
        unsigned id;
    } accepted[] = {{"201", 0x201},   {"202", 0x202},   {"QZ201", 0x201}, {"QZ202", 0x202},
                    {"qz201", 0x201}, {"qZ202", 0x202}, {"0x201", 0x201}, {"0X202", 0x202}};
    for (const auto& [type, id] : accepted) {
        EXPECT_EQ(doGetDeviceId("tool", type), 0) << type;
        EXPECT_EQ(get_device_id(), id) << type;
    }
    EXPECT_EQ(error.take(), "");

    for (const char* type : {"", "QZ203", "2010", "QZ201 ", "\033[2J", "20"}) {
        EXPECT_LT(doGetDeviceId("tool", type), 0) << type;
        EXPECT_EQ(get_device_id(), 0x202U) << type;
        const std::string line = error.take();
        EXPECT_EQ(line.find("tool: "), 0U) << line;
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
        EXPECT_NE(line.find("QZ201"), std::string::npos) << line;
        EXPECT_NE(line.find("QZ202"), std::string::npos) << line;
        EXPECT_EQ(line.find('\033'), std::string::npos) << line;
    }
    EXPECT_LT(doGetDeviceId(nullptr, nullptr), 0);
    EXPECT_NE(error.take(), "");

    vekRwOpen(0);
    EXPECT_EQ(get_device_id(), 0x202U) << "the set id wins over the chip";
    EXPECT_EQ(vekSetCard(1), VEK_OK);
    EXPECT_EQ(vekSetCard(0), VEK_OK);
    EXPECT_EQ(get_device_id(), 0x202U) << "and over that of a selected card";
    vekClose();
    EXPECT_EQ(get_device_id(), 0x202U) << "and outlives the connection";
}

}  // namespace
