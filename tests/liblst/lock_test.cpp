#include "tests/liblst/support.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>

namespace {

bool readable(int fd, int milliseconds)
{
    pollfd waited = {.fd = fd, .events = POLLIN, .revents = 0};
    return poll(&waited, 1, milliseconds) == 1;
}

TEST(Locks, HoldBackAnotherProcess)
{
    const TempFile file("");
    const std::string lock_file = std::string(file.path) + ".lock";
    const int fd = lockF(file.path);
    ASSERT_GE(fd, 0);
    struct stat status = {};
    ASSERT_EQ(stat(lock_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);

    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        const bool asks = write(ends[1], "?", 1) == 1;
        const int own = lockF(file.path);
        const bool has = write(ends[1], "!", 1) == 1;
        ulockF(file.path, own);
        _exit(asks && own >= 0 && has ? 0 : 1);
    }
    char news = 0;
    ASSERT_EQ(read(ends[0], &news, 1), 1);
    EXPECT_FALSE(readable(ends[0], 200)) << "the child did not wait";
    ulockF(file.path, fd);
    EXPECT_TRUE(readable(ends[0], 5000)) << "the child still waits";
    EXPECT_EQ(fcntl(fd, F_GETFD), -1) << "not closed";
    int child_status = -1;
    waitpid(child, &child_status, 0);
    EXPECT_EQ(child_status, 0);
    EXPECT_EQ(access(lock_file.c_str(), F_OK), -1);
    close(ends[0]);
    close(ends[1]);
}

TEST(Locks, NeedTheFile)
{
    EXPECT_EQ(lockF("/tmp/liblst.nonexistent"), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(access("/tmp/liblst.nonexistent.lock", F_OK), -1);
}

} // namespace
