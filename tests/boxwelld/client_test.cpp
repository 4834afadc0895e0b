// The client library against peers that misbehave, and the daemon against such clients.
#include "common/mxl/bwdclient.h"
#include "tests/boxwelld/daemon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <vector>

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
            const timeval patience = {20, 0}; // a client that is not at its deadline then gets EPROTO
            setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
            if (wait)
                recv(fd, request, sizeof request, MSG_WAITALL);
            close(fd);
        });
        const int result = call("request").result;
        EXPECT_EQ(result == 0 ? 0 : errno, error);
        peer.join();
        close(listener);
    }
    unlink(path.c_str());
    EXPECT_NE(call("request").result, 0) << "there is no socket";
    setenv("BOXWELLD_SOCKET", ("/tmp/" + std::string(108, 'x')).c_str(), 1);
    EXPECT_NE(call("request").result, 0) << "the path is too long";
    EXPECT_NE(process_request_bwdclient(nullptr, 0, nullptr, nullptr), 0);
}

/** Clients of the daemon that send so much and then wait. */
class Waiting {
  public:
    Waiting(const Daemon& daemon, int count, const std::string& sent)
    {
        for (int i = 0; i < count; ++i) {
            clients_.push_back(local_socket(connect, daemon.path("socket")));
            send(clients_.back(), sent.data(), sent.size(), MSG_NOSIGNAL);
        }
    }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting() { std::for_each(clients_.begin(), clients_.end(), close); }

    /** Whether the daemon closes each of the connections, without an answer. */
    bool are_left() const
    {
        const timeval patience = {20, 0};
        return std::all_of(clients_.begin(), clients_.end(), [&](int client) {
            char answer = 0;
            setsockopt(client, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
            return recv(client, &answer, 1, 0) == 0;
        });
    }

  private:
    std::vector<int> clients_;
};

TEST(Server, ServesOthersBesideClientsThatNeitherSendNorRead)
{
    const Daemon daemon(600000);
    setenv("BOXWELLD_TIMEOUT_MS", "200000", 1);
    const std::string text(1 << 20, 'x');
    daemon.write("long", text);
    daemon.run("order reply @" + daemon.path("long") + " --count 2");
    const Waiting deaf(daemon, 1, "\0\0\0\7request"s);
    const Waiting silent(daemon, 200, "");
    const Waiting slow(daemon, 1, "\0\0"s);
    const Waiting slower(daemon, 1, "\0\0\0\7re"s);
    close(local_socket(connect, daemon.path("socket")));
    EXPECT_TRUE(call("request").reply == text);
    EXPECT_THAT(call(find_user("bob")).reply, HasSubstr("success"));
}

TEST(Server, LeavesWhoIsSilentAndThoseItCannotUnderstand)
{
    const Daemon daemon(300);
    setenv("BOXWELLD_TIMEOUT_MS", "20000", 1);
    const Waiting silent(daemon, 300, ""); // more than it has beside each other
    EXPECT_THAT(call(find_user("bob")).reply, HasSubstr("success"));
    const Waiting slow(daemon, 1, "\0\0\0\7re"s);
    const Waiting without_text(daemon, 1, "\xFF\xFF\xFF\xFF"s);
    const Waiting too_long(daemon, 1, "\x04\0\0\1"s);
    EXPECT_TRUE(silent.are_left() && slow.are_left() && without_text.are_left() && too_long.are_left());
    const std::string log = daemon.read("log");
    for (const char* why : {": Connection timed out\n", ": it has no text\n", ": Protocol error\n"})
        EXPECT_THAT(log, HasSubstr(std::string("boxwelld: a request was not received") + why));
}
