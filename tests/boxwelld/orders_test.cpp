// Ordered replies in their turns; what each kind brings about, the tests of the operations show.
#include "tests/boxwelld/daemon.h"

#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>

using testing::HasSubstr;

TEST(Orders, TakeTheirTurnsAndRepeat)
{
    const Daemon daemon;
    daemon.write("text", "from a file");
    daemon.run("order reply second --skip 1 --count 2");
    daemon.run("order reply @" + daemon.path("text"));
    daemon.run("order reply always --skip 3 --count 0");
    for (const char* expected : {"from a file", "second", "second", "always", "always"})
        EXPECT_EQ(call(find_user("bob")).reply, expected);
    daemon.run("order clear");
    EXPECT_THAT(call(find_user("bob")).reply, HasSubstr("success"));
}

TEST(Orders, DieEndsTheDaemonOnceAsAKillDoes)
{
    Daemon daemon;
    daemon.run("order die");
    EXPECT_NE(call(delete_user("1002")).result, 0);
    EXPECT_EQ(WTERMSIG(daemon.stop(0)), SIGKILL);
    EXPECT_NE(call(find_user("bob")).result, 0) << "there is no daemon";
    daemon.start();
    EXPECT_THAT(call(find_user("bob")).reply, HasSubstr("<User_Id>1002</User_Id>"));
}

TEST(Orders, AreListedWithWhatEachWaitsFor)
{
    const Daemon daemon;
    EXPECT_EQ(daemon.run("order list").output, "orders\n  (none)\nchaos\n  (off)\n");
    const struct {
        std::string given;
        std::string listed;
    } cases[] = {
        {"refuse 'Disk is full'", "the next request: refuse Disk is full"},
        {"fail --skip 1 --count 2", "the next 2 requests, behind 1 other: fail"},
        {"cut 7 --skip 3 --count 0", "every request, behind 3 others: cut 7"},
        {"no-reply --for '<xs:add'", "the next request that holds \"<xs:add\": no-reply"},
        {"hang --for bob --skip 1 --count 3", "the next 3 requests that hold \"bob\", behind 1 other: hang"},
        {"reply '" + std::string(53, 'x') + "äy\n'", "the next request: reply " + std::string(53, 'x') + "…"},
    };
    std::string expected = "orders\n";
    for (const auto& [given, listed] : cases) {
        daemon.run("order " + given);
        expected += "  " + listed + '\n';
    }
    EXPECT_EQ(daemon.run("order list").output, expected + "chaos\n  (off)\n");
    call(find_user("bob"));
    EXPECT_EQ(Json::parse(daemon.run("order list --json").output).at("orders")[0],
        Json::parse(R"({"kind": "fail", "text": "", "for": "", "skip": 0, "count": 2})"))
        << "a request has taken the first and passed the second";
}

TEST(Orders, CountOnlyRequestsThatHoldTheirText)
{
    const Daemon daemon;
    daemon.run("order reply third --for bob --skip 1");
    daemon.run("order reply first --for bob");
    daemon.run("order reply any --for '<xs:' --skip 3");
    daemon.run("order reply never --for BOB --count 0");
    const struct {
        const char* name;
        std::string reply;
    } cases[] = {{"alice", "success"}, {"bob", "first"}, {"bob", "third"}, {"bob", "any"}, {"bob", "success"}};
    for (const auto& [name, reply] : cases)
        EXPECT_THAT(call(find_user(name)).reply, HasSubstr(reply)) << name;
    EXPECT_EQ(
        daemon.run("order list").output, "orders\n  every request that holds \"BOB\": reply never\nchaos\n  (off)\n");
}

TEST(Orders, KeepTheReplyBackAndNobodyElse)
{
    const Daemon daemon(60);
    const struct {
        const char* order;
        const char* timeout_ms;
        int error;
        const char* found; // of the user whom the request deletes
    } cases[] = {
        {"hang", "200", ETIMEDOUT, "<User_Id>1002</User_Id>"},
        {"delay 600000", "200", ETIMEDOUT, "status=\"success\"></xs:response>"},
        {"delay 200", "60000", 0, "status=\"success\"></xs:response>"},
        {"delay 0", "60000", 0, "status=\"success\"></xs:response>"},
    };
    for (const auto& [order, timeout_ms, error, found] : cases) {
        SCOPED_TRACE(order);
        daemon.seed();
        daemon.run(std::string("order ") + order);
        setenv("BOXWELLD_TIMEOUT_MS", timeout_ms, 1);
        const auto begin = std::chrono::steady_clock::now();
        const Answer answer = call(delete_user("1002"));
        EXPECT_EQ(answer.result == 0 ? 0 : errno, error);
        EXPECT_EQ(answer.reply.empty(), error != 0);
        if (order == std::string("delay 200")) {
            EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(200));
        }
        setenv("BOXWELLD_TIMEOUT_MS", "60000", 1);
        EXPECT_THAT(call(find_user("bob")).reply, HasSubstr(found));
    }
    EXPECT_EQ(daemon.read("log"), "") << "who has left is no failure";
}

TEST(Orders, OfAStateFromBeforeTheTextThatARequestMustHold)
{
    const Daemon daemon;
    daemon.run("order reply kept --count 2");
    SQLite::Database(daemon.path("state/state.db"), SQLite::OPEN_READWRITE)
        .exec("ALTER TABLE orders DROP COLUMN holds");
    EXPECT_EQ(daemon.run("order list").output, "orders\n  the next 2 requests: reply kept\nchaos\n  (off)\n");
    daemon.run("order reply new --for bob --skip 1");
    EXPECT_EQ(call(find_user("bob")).reply, "kept");
}
