// The client library against peers that misbehave, and the daemon against such clients.
#include "common/mxl/bwdclient.h"
#include "tests/boxwelld/daemon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

using namespace std::string_literals;
using testing::HasSubstr;

namespace {

/** A socket bound to, or connected with, `path`. */
int local_socket(decltype(&connect) join, const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(join(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    return fd;
}

} // namespace

TEST(Client, FailsWithoutReachingForWhatThePeerDidNotSend)
{
    const struct {
        const char* what;
        std::string answer;
        bool hangs; // instead of closing the connection
        int error;  // in errno, after a failure
    } cases[] = {
        {"closes at once", "", false, EPROTO},
        {"half a length", "\0\0"s, false, EPROTO},
        {"half a text", "\0\0\0\5ab"s, false, EPROTO},
        {"half a text, then nothing", "\0\0\0\5ab"s, true, ETIMEDOUT},
        {"nothing", "", true, ETIMEDOUT},
        {"a length beyond bounds", "\x04\0\0\1xxxx"s, true, EPROTO},
        {"an empty text", "\0\0\0\0"s, true, 0},
        {"no reply", "\xFF\xFF\xFF\xFF"s, true, 0},
    };
    const std::string path = "/tmp/boxwelld_peer." + std::to_string(getpid());
    setenv("BOXWELLD_SOCKET", path.c_str(), 1);
    setenv("BOXWELLD_TIMEOUT_MS", "200", 1);
    for (const auto& [what, text, hangs, error] : cases) {
        SCOPED_TRACE(what);
        unlink(path.c_str());
        const int listener = local_socket(bind, path);
        listen(listener, 1);
        std::thread peer([&, answer = text, wait = hangs] {
            const int fd = accept(listener, nullptr, nullptr);
            char request[64];
            EXPECT_GT(recv(fd, request, sizeof request, 0), 0);
            send(fd, answer.data(), answer.size(), MSG_NOSIGNAL);
            if (wait)
                recv(fd, request, sizeof request, MSG_WAITALL);
            close(fd);
        });
        const auto begin = std::chrono::steady_clock::now();
        const int result = call("request").result;
        EXPECT_EQ(result == 0 ? 0 : errno, error);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
        peer.join();
        close(listener);
    }
    unlink(path.c_str());
    EXPECT_NE(call("request").result, 0) << "there is no socket";
    setenv("BOXWELLD_SOCKET", ("/tmp/" + std::string(108, 'x')).c_str(), 1);
    EXPECT_NE(call("request").result, 0) << "the path is too long";
    EXPECT_NE(process_request_bwdclient(nullptr, 0, nullptr, nullptr), 0);
}

TEST(Server, IsNotHeldByAClientThatSendsNothing)
{
    const Daemon daemon;
    setenv("BOXWELLD_TIMEOUT_MS", "5000", 1);
    const int silent = local_socket(connect, daemon.path("socket"));
    const int gone = local_socket(connect, daemon.path("socket"));
    close(gone);
    EXPECT_THAT(call(find_user("bob")).reply, HasSubstr("success"));
    close(silent);
}
