#include "common/device/accounts.h"
#include "tests/syscmd/on_device.h"

namespace {

TEST_F(OnDevice, idOfTheSystemsDatabase)
{
    Owned id;
    EXPECT_EQ(GetUserIDByUsername(&id.text, "root"), SUCCESS);
    EXPECT_EQ(id.read(), "0");
    Owned none;
    EXPECT_EQ(GetUserIDByUsername(&none.text, "nobody-of-that-name"), -1);
    EXPECT_EQ(none.text, nullptr);
    expectSaid({});
}

} // namespace
