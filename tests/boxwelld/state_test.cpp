// The daemon's commands: seeds, what they show, the transcript, bad use.
#include "tests/boxwelld/daemon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::MatchesRegex;

TEST(Seed, IsRefusedInOneLineAndLosesNothing)
{
    const Daemon daemon;
    call(find_user("bob"));
    daemon.run("order reply x --skip 1");
    const Json before = daemon.state();
    const std::string passwd = daemon.read("passwd");
    const char* const seeds[] = {
        "",
        R"({"accounts": [)",
        "[]",
        R"({"acounts": []})",
        R"({"accounts": {}})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": "a", "group": "h"}]})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": "a/b", "group": "g"}]})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": 3, "group": "g"}]})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": "a", "group": "g", "id": 0}]})",
        R"({"groups": [{"name": "g", "id": 7}, {"name": "h", "id": 7}]})",
        R"({"groups": [{"name": "root"}]})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": "a", "group": "g", "ids": 9}]})",
    };
    for (const char* text : seeds) {
        SCOPED_TRACE(text);
        daemon.write("bad", text);
        const Outcome run = daemon.run("seed " + daemon.path("bad"));
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.output, MatchesRegex("boxwelld: [^\n]+\n"));
        EXPECT_EQ(daemon.read("passwd"), passwd);
    }
    EXPECT_EQ(daemon.state(), before);
    EXPECT_EQ(Json::parse(daemon.run("transcript --json").output).size(), 1);
    call(find_user("bob"));
    EXPECT_EQ(call(find_user("bob")).reply, "x") << "the order still stands";
}

TEST(Seed, TakesWhatShowPrintsAndBeginsAnew)
{
    const Daemon daemon;
    const Json before = daemon.state();
    const std::string passwd = daemon.read("passwd");
    call(delete_user("1002"));
    call(add_user("zoe"));
    daemon.run("order fail");
    daemon.write("state.json", before.dump());
    EXPECT_EQ(daemon.run("seed - < " + daemon.path("state.json")).status, 0);
    EXPECT_EQ(daemon.state(), before);
    EXPECT_EQ(daemon.read("passwd"), passwd);
    EXPECT_EQ(daemon.run("transcript --json").output, "[]\n");
    EXPECT_EQ(call(add_user("zoe")).result, 0) << "orders are cleared";
}

TEST(Commands, BadUseIsOneLineAndAStatus)
{
    const Daemon daemon;
    const struct {
        const char* arguments;
        int status;
    } cases[] = {
        {"", 2}, {"frobnicate", 2}, {"seed", 2}, {"seed /nowhere", 1}, {"order maybe", 2}, {"order refuse", 2},
        {"order fail text", 2}, {"order cut x", 2}, {"order cut 1 --skip -1", 2}, {"order reply @/nowhere", 1},
        {"transcript --from x", 2}, {"show --state /proc/none", 1}, {"serve", 1}, // one is running
    };
    for (const auto& [arguments, status] : cases) {
        SCOPED_TRACE(arguments);
        const Outcome run = daemon.run(arguments);
        EXPECT_EQ(run.status, status);
        EXPECT_THAT(run.output, MatchesRegex("boxwelld: [^\n]+\n"));
    }
    EXPECT_THAT(daemon.run("show").output, HasSubstr("  1003    dave "));
}
