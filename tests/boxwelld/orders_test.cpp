// Ordered replies in their turns; what each kind brings about, the tests of the operations show.
#include "tests/boxwelld/daemon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

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
    EXPECT_EQ(daemon.run("order list").output, "orders\n  (none)\n");
    const struct {
        std::string given;
        std::string listed;
    } cases[] = {
        {"refuse 'Disk is full'", "the next request: refuse Disk is full"},
        {"fail --skip 1 --count 2", "the next 2 requests, behind 1 other: fail"},
        {"cut 7 --skip 3 --count 0", "every request, behind 3 others: cut 7"},
        {"reply '" + std::string(53, 'x') + "äy\n'", "the next request: reply " + std::string(53, 'x') + "…"},
    };
    std::string expected = "orders\n";
    for (const auto& [given, listed] : cases) {
        daemon.run("order " + given);
        expected += "  " + listed + '\n';
    }
    EXPECT_EQ(daemon.run("order list").output, expected);
    call(find_user("bob"));
    EXPECT_EQ(Json::parse(daemon.run("order list --json").output).at("orders")[0],
        Json::parse(R"({"kind": "fail", "text": "", "skip": 0, "count": 2})"))
        << "a request has taken the first and passed the second";
}
