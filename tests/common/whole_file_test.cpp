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

} // namespace
