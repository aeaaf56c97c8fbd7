#include "tovira_parse/wait.h"

#include "console_support.h"
#include "noted_wait.h"

namespace console_test
{
namespace
{

using ::testing::ElementsAre;

class WaitTest : public ConsoleTest
{
};

TEST_F(WaitTest, TakesTheTimeAskedFor)
{
    waitMicroseconds(1);
    waitMicroseconds(999'999);
    waitMicroseconds(1'500'000);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("wait(1)", "wait(999999)", "wait(1500000)"));
}

TEST_F(WaitTest, GoesOnWithTheRestAfterASignal)
{
    interruptWaits(2);
    waitMicroseconds(100'000);
    EXPECT_THAT(takeDeviceCalls(), ElementsAre("wait(100000)", "wait(50000)", "wait(25000)"));
}

}  // namespace
}  // namespace console_test
