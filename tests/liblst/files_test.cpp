#include "liblst/whole_file.h"
#include "tests/liblst/calls.h"
#include "tests/liblst/support.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <functional>
#include <memory>
#include <set>
#include <thread>
#include <utility>

namespace {

/** Text whose period no power of two hides. */
std::string pattern(std::size_t size)
{
    std::string result;
    while (result.size() < size) {
        result += "abcdefghijklmnopqrstuvw";
    }
    return result.substr(0, size);
}

/** Interrupts the system calls of the calling thread, every few milliseconds. */
struct Interruptions {
    Interruptions()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {
        };
        sigaction(SIGALRM, &action, nullptr);
        every({0, 2000});
    }
    ~Interruptions() { every({0, 0}); }

    static void every(timeval time)
    {
        const itimerval timer = {time, time};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
};

TEST(Files, AreReadWhole)
{
    for (const std::size_t size : {1U, 2047U, 2048U, 2049U, 5000U, 1U << 20}) {
        const std::string content = pattern(size);
        const TempFile file(content);
        char* whole = nullptr;
        EXPECT_EQ(getFileContentFormat(&whole, "%s", file.path), 0);
        EXPECT_EQ(text(whole), content) << size;
        lseek(file.fd, static_cast<off_t>(size / 2), SEEK_SET); // its size now promises too much
        EXPECT_EQ(text(ptGetFileContent(file.fd)), content.substr(size / 2)) << size;
        EXPECT_EQ(ptGetFileContent(file.fd), nullptr);
    }
    char* unsized = nullptr;
    EXPECT_EQ(getFileContentFormat(&unsized, "/proc/%d/status", getpid()), 0);
    EXPECT_NE(text(unsized).find("ctxt_switches"), std::string::npos); // near its end
}

// The result ends at the size that the file system reports only if a read says so.
TEST(Files, LargerThanTheFirstAllocationAreReadToTheirEnd)
{
    constexpr off_t SIZE = off_t{65} << 20;
    const TempFile file("");
    ASSERT_EQ(pwrite(file.fd, "end", 3, SIZE - 3), 3);
    const Instead short_reads(on_read,
        [](int fd, void* to, std::size_t size) { return __real_read(fd, to, std::min<std::size_t>(size, 1 << 20)); });
    const std::unique_ptr<char, decltype(&std::free)> whole(ptGetFileContent(file.fd), std::free);
    ASSERT_EQ(lseek(file.fd, 0, SEEK_CUR), SIZE);
    EXPECT_STREQ(whole.get() + SIZE - 3, "end");
}

TEST(Files, OfASizeThatOnlyTheFileSystemBelievesAreRead)
{
    const TempFile file("text");
    ASSERT_EQ(ftruncate(file.fd, off_t{1} << 45), 0);
    const Instead ends(on_read,
        [](int fd, void* to, std::size_t) { return __real_read(fd, to, lseek(fd, 0, SEEK_CUR) == 0 ? 4 : 0); });
    EXPECT_EQ(text(ptGetFileContent(file.fd)), "text");
}

// Each read of such a socket takes one message and loses what it has no room for.
TEST(Files, OfUnknownSizeAreReadInChunks)
{
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    std::string expected;
    for (char letter = 'a'; letter < 'g'; ++letter) {
        const std::string message(3000, letter);
        ASSERT_EQ(write(ends[1], message.data(), message.size()), 3000);
        expected += message.substr(0, 2048);
    }
    close(ends[1]);
    EXPECT_EQ(text(ptGetFileContent(ends[0])), expected);
    close(ends[0]);
}

TEST(Files, AreClosedInOtherPrograms)
{
    const TempFile file("line");
    std::vector<int> flags;
    const Instead looked_at(on_read, [&](int fd, void* to, std::size_t size) {
        flags.push_back(fcntl(fd, F_GETFD));
        return __real_read(fd, to, size);
    });
    char* content = nullptr;
    EXPECT_EQ(getFileContentFormat(&content, "%s", file.path), 0);
    EXPECT_EQ(text(content) + text(ptGetFileRowFormat("%s", file.path)), "lineline");
    EXPECT_EQ(flags, std::vector<int>(3, FD_CLOEXEC)); // two reads of a line without an end
    char* pending = nullptr;
    EXPECT_EQ(readFileRow(&pending, -1), -1);
}

TEST(Files, RefusedForNowAreWaitedFor)
{
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
    std::set<std::pair<int, int>> waits; // for what, and how long
    std::function<void()> meanwhile;
    const Instead waited(on_poll, [&](pollfd* descriptor, nfds_t, int milliseconds) {
        waits.emplace(descriptor->events, milliseconds);
        meanwhile();
        return 1;
    });
    std::string received = pattern(1 << 20);
    meanwhile = [&] {
        EXPECT_GT(read(ends[1], received.data(), received.size()), 0);
    };
    writeToFileFormat(ends[0], "%s", received.c_str());
    EXPECT_EQ(waits, (std::set<std::pair<int, int>>{{POLLOUT, -1}}));
    waits.clear();
    meanwhile = [&] {
        shutdown(ends[1], write(ends[1], "text", 4) == 4 ? SHUT_WR : -1);
    };
    EXPECT_EQ(text(ptGetFileContent(ends[0])), "text");
    EXPECT_EQ(waits, (std::set<std::pair<int, int>>{{POLLIN, -1}}));
    close(ends[0]);
    close(ends[1]);
}

// Over a socket that takes and gives little at a time and refuses the rest, under signals, which would end
// a wait for the wrong thing, and without.
TEST(Files, ReadingAndWritingGoOnThroughRefusalsAndInterruptions)
{
    const struct {
        int flags;
        bool interrupted;
    } cases[] = {{0, true}, {SOCK_NONBLOCK, true}, {SOCK_NONBLOCK, false}};
    for (const auto& row : cases) {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | row.flags, 0, ends), 0);
        const std::string content = pattern(3 << 20);
        std::string received;
        int read_error = 0;
        const auto interruptions = row.interrupted ? std::make_unique<Interruptions>() : nullptr;
        std::thread reader([&] {
            usleep(20000); // by then the socket is full
            errno = ERANGE;
            received = text(ptGetFileContent(ends[1]));
            read_error = errno;
        });
        EXPECT_EQ(writeToFileFormat(ends[0], "%s", content.c_str()), -1); // all of it, but then:
        EXPECT_EQ(errno, EINVAL);                                         // fsync() of a socket
        usleep(20000);                                                    // the reader waits for more
        close(ends[0]);
        reader.join();
        close(ends[1]);
        EXPECT_TRUE(received == content) << received.size();
        EXPECT_EQ(read_error, ERANGE);
    }
}

TEST(Files, ThatCannotBeReadLeaveTheResultAlone)
{
    const TempFile empty("");
    char untouched = 0;
    const struct {
        const char* path;
        int error;
    } cases[] = {{"/nonexistent", ENOENT}, {"/", EISDIR}, {empty.path, 0}};
    for (const auto& row : cases) {
        char* content = &untouched;
        errno = 0;
        EXPECT_EQ(getFileContentFormat(&content, "%s", row.path), -1) << row.path;
        EXPECT_EQ(errno, row.error) << row.path;
        EXPECT_EQ(content, &untouched) << row.path;
    }
}

TEST(Files, AReadErrorReleasesOrEndsTheText)
{
    for (const OnReadError on_error : {OnReadError::Release, OnReadError::Keep}) {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        writeToFileFormat(ends[0], "text");
        writeToFileFormat(ends[1], "never read, so that closing resets the connection");
        close(ends[0]);
        errno = 0;
        EXPECT_EQ(text(readToEnd(ends[1], on_error)), on_error == OnReadError::Keep ? "text" : "(null)");
        EXPECT_EQ(errno, ECONNRESET);
        close(ends[1]);
    }
}

TEST(Shell, OutputAndStatus)
{
    char* output = nullptr;
    EXPECT_EQ(getShellContentFormat(&output, "printf %%s%d one; exit 3", 1), 0);
    EXPECT_EQ(text(output), "one1");
    EXPECT_EQ(getShellContentFormat(&output, "true"), -1);
    EXPECT_EQ(WEXITSTATUS(executeShellFormat("exit %d", 3)), 3);
}

} // namespace
