#include "liblst/liblst.h"

#include <fcntl.h>
#include <gtest/gtest.h>
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

/** Runs `work` in another process. */
template<typename Work> pid_t start(Work work)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(work() ? 0 : 1);
    }
    return child;
}

bool waitsForALock(pid_t process)
{
    std::ifstream locks("/proc/locks");
    const std::string waits = "WRITE " + std::to_string(process) + ' ';
    for (std::string line; std::getline(locks, line);) {
        if (line.find("-> POSIX") != line.npos && line.find(waits) != line.npos) {
            return true;
        }
    }
    return false;
}

TEST_F(Locks, AreOfTheWholeFileAndTheOwnersOnly)
{
    const mode_t before = umask(0);
    const int fd = lockF(name.c_str());
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(lock_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
    const pid_t child = start([&] {
        const int far = open(lock_file.c_str(), O_RDWR);
        return lseek(far, 1 << 30, SEEK_SET) == 1 << 30 && lockf(far, F_TEST, 1) == -1;
    });
    int result = -1;
    waitpid(child, &result, 0);
    EXPECT_EQ(result, 0) << "only its beginning is locked";
    ulockF(name.c_str(), fd);
    EXPECT_EQ(fcntl(fd, F_GETFD), -1) << "not closed";
    EXPECT_EQ(access(lock_file.c_str(), F_OK), -1);
}

TEST_F(Locks, HoldBackAnotherProcess)
{
    const int fd = lockF(name.c_str());
    const pid_t child = start([&] {
        const int own = lockF(name.c_str());
        ulockF(name.c_str(), own);
        return own >= 0;
    });
    int result = -1;
    pid_t ended = 0;
    while (ended == 0 && !waitsForALock(child)) {
        ended = waitpid(child, &result, WNOHANG);
    }
    EXPECT_EQ(ended, 0) << "the child did not wait";
    ulockF(name.c_str(), fd);
    waitpid(child, &result, 0);
    EXPECT_EQ(result, 0);
}

TEST_F(Locks, NeedTheFile)
{
    EXPECT_EQ(lockF((name + ".absent").c_str()), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(access((name + ".absent.lock").c_str(), F_OK), -1);
}

} // namespace
