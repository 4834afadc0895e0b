#include "common/device/accounts.h"
#include "tests/syscmd/on_device.h"

namespace {

TEST_F(OnDevice, idOfTheSystemsDatabase)
{
    Owned id;
    EXPECT_EQ(GetUserIDByUsername(&id.text, "root"), SUCCESS);
    EXPECT_EQ(id.read(), "0");
    shell("echo 'large:x:3000000000:100::/:/bin/false' >> /etc/passwd");
    Owned large;
    EXPECT_EQ(GetUserIDByUsername(&large.text, "large"), SUCCESS);
    EXPECT_EQ(large.read(), "-1294967296") << "as the daemon spells it";
    shell("sed /^large:/d /etc/passwd > /var/lib/device/p; cat /var/lib/device/p > /etc/passwd");
    char untouched[] = "untouched";
    char* kept = untouched;
    EXPECT_EQ(GetUserIDByUsername(&kept, "nobody-of-that-name"), -1);
    EXPECT_EQ(kept, untouched);
    expectSaid({});
}

} // namespace
