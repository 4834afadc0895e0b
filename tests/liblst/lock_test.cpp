#include "liblst/liblst.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

/** A file to lock, in a folder of its own where the test runs. */
struct Locks : testing::Test {
    Locks()
    {
        EXPECT_NE(mkdtemp(folder), nullptr);
        name = std::string(folder) + "/file";
        lock_file = name + ".lock";
        std::ofstream{name};
    }
    ~Locks() override { std::filesystem::remove_all(folder); }

    char folder[13] = "locks.XXXXXX";
    std::string name;
    std::string lock_file;
};

/** The status with which `work` ends another process. */
template<typename Work> pid_t start(Work work)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(work() ? 0 : 1);
    }
    return child;
}
int statusOf(pid_t child)
{
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

TEST_F(Locks, AreOfTheWholeFileAndTheOwnersOnly)
{
    const mode_t before = umask(0);
    const int fd = lockF(name.c_str());
    umask(before);
    ASSERT_GE(fd, 0);
    struct stat status = {};
    ASSERT_EQ(stat(lock_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(fcntl(fd, F_GETFL) & O_ACCMODE, O_RDWR);
    for (const off_t place : {0, 1 << 30}) {
        EXPECT_EQ(statusOf(start([&] {
            const int other = open(lock_file.c_str(), O_RDWR);
            return lseek(other, place, SEEK_SET) == place && lockf(other, F_TEST, 1) == -1;
        })),
            0)
            << place << " is not locked";
    }
    ulockF(name.c_str(), fd);
    EXPECT_EQ(fcntl(fd, F_GETFD), -1) << "not closed";
    EXPECT_EQ(access(lock_file.c_str(), F_OK), -1);
}

TEST_F(Locks, HoldBackAnotherProcess)
{
    const int fd = lockF(name.c_str());
    int asks[2];
    int released[2];
    ASSERT_EQ(pipe(asks) | pipe(released), 0);
    const pid_t child = start([&] {
        const bool asked = write(asks[1], "?", 1) == 1;
        const int own = lockF(name.c_str());
        pollfd waited = {.fd = released[0], .events = POLLIN, .revents = 0};
        const bool has_waited = poll(&waited, 1, 0) == 1;
        ulockF(name.c_str(), own);
        return asked && own >= 0 && has_waited;
    });
    char asked = 0;
    EXPECT_EQ(read(asks[0], &asked, 1), 1);
    EXPECT_EQ(write(released[1], "!", 1), 1);
    ulockF(name.c_str(), fd);
    EXPECT_EQ(statusOf(child), 0);
    for (const int end : {asks[0], asks[1], released[0], released[1]}) {
        close(end);
    }
}

TEST_F(Locks, NeedTheFile)
{
    EXPECT_EQ(lockF((name + ".absent").c_str()), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(access((name + ".absent.lock").c_str(), F_OK), -1);
}

} // namespace
