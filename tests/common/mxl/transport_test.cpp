#include "tests/syscmd/on_device.h"

namespace {

TEST_F(OnDevice, resultsOfAnExchange)
{
    Owned refusal;
    EXPECT_EQ(SendMXLtoBWD(&refusal.text, "<none/>"), SUCCESS) << "refused, but answered";
    EXPECT_EQ(refusal.read(), exchanges().at(0).reply);
    shell("boxwelld order fail; boxwelld order no-reply --skip 1");
    char untouched[] = "untouched";
    char* reply = untouched;
    EXPECT_EQ(SendMXLtoBWD(&reply, "<none/>"), -1);
    EXPECT_EQ(reply, untouched) << "its caller's, after a failure";
    EXPECT_EQ(SendMXLtoBWD(&reply, "<none/>"), -1) << "no reply";
    expectSaid({});
}

} // namespace
