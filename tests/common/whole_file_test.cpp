#include "common/isowner.h"
#include "tests/liblst/calls.h"
#include "tests/syscmd/on_device.h"

#include <fcntl.h>

#include <cerrno>

namespace {

TEST_F(OnDevice, wholeFiles)
{
    shell(": > /var/lib/device/empty; head -c 5000 /dev/zero | tr '\\0' x > /var/lib/device/long");
    EXPECT_EQ(Owned{aGetFile("/%s/%s", "var/lib/device", "long")}.read(), std::string(5000, 'x'));
    EXPECT_EQ(aGetFile("/%s", "var/lib/device/empty"), nullptr);
    EXPECT_EQ(aGetFile("/%s", "nowhere"), nullptr);
    const int file = open("/var/lib/device/long", O_RDONLY | O_CLOEXEC);
    lseek(file, 4996, SEEK_SET);
    EXPECT_EQ(Owned{aGetFileContent(file)}.read(), "xxxx");
    EXPECT_EQ(aGetFileContent(file), nullptr) << "at its end";
    EXPECT_EQ(close(file), 0) << "it stays open";
}

TEST_F(OnDevice, filesThatCanBeReadInPartOnly)
{
    const Instead damaged(on_read, [](int fd, void* to, std::size_t) {
        return lseek(fd, 0, SEEK_CUR) == 0 ? __real_read(fd, to, 80) : (errno = EIO, -1);
    });
    EXPECT_EQ(isOwner("alice"), 0);
    EXPECT_EQ(Owned{GetSSOOwner()}.read(), "alice");
    EXPECT_EQ(Owned{aGetFile("%s", OWNER_FILE)}.read().size(), 80U);
    const int file = open(OWNER_FILE, O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(Owned{aGetFileContent(file)}.read().size(), 80U);
    close(file);
}

} // namespace
