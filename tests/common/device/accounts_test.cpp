#include "common/device/accounts.h"
#include "tests/liblst/calls.h"
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

TEST_F(OnDevice, buffersOfLookUps)
{
    std::vector<std::size_t> sizes;
    const Instead counted(on_realloc, [&](void* old, std::size_t size) {
        sizes.push_back(size);
        return __real_realloc(old, size);
    });
    shell("echo large:x:3000:$(seq -s ,m 2000),dave >> /etc/group");
    for (const auto& [reported, is_member] : {std::pair{0, true}, {1000, true}, {-1, false}}) {
        const Instead told(on_sysconf, [size = reported](int) { return size; });
        EXPECT_EQ(isMember("dave", 2002, "large"), is_member) << reported;
        UserNumbers numbers = {};
        EXPECT_EQ(findUser("dave", &numbers), is_member ? SUCCESS : -1) << reported;
    }
    shell("sed /^large:/d /etc/group > /var/lib/device/g; cat /var/lib/device/g > /etc/group");
    EXPECT_EQ(sizes, (std::vector<std::size_t>{32768, 17384, 33768}));
}

} // namespace
