#include "syscmd/daemon/remote_user.h"
#include "tests/syscmd/on_device.h"

namespace {

TEST_F(OnDevice, aNullFullNameIsPrinted)
{
    EXPECT_EQ(AddNetwork("zed", nullptr), SUCCESS);
    EXPECT_NE(exchanges().at(0).request.find("<User FullName=\"(null)\" UserName=\"zed\"/>"), std::string::npos);
    expectSaid({said("AddNetwork: 285", sent(0)), said("AddNetwork: 288", answer(0))});
}

} // namespace
