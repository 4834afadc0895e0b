// Faults by a seeded plan.
#include "tests/boxwelld/daemon.h"

#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

using testing::HasSubstr;

namespace {

/** The plan's faults as `order list` tells them. */
Json faults(const Daemon& daemon)
{
    return Json::parse(daemon.run("order list --json").output).at("chaos").at("faults");
}

/** The faults that the transcript tells, in the same form. */
Json met(const Daemon& daemon)
{
    Json list = Json::array();
    for (const Json& exchange : Json::parse(daemon.run("transcript --json").output))
        list.push_back(exchange.at("order"));
    return list;
}

} // namespace

/** The numbers are the generator's as another program computes them. */
TEST(Chaos, FollowsFromTheSeedOnEveryMachine)
{
    const struct {
        const char* given;
        const char* listed;
    } cases[] = {
        {"--seed 7 --rate 20 --count 30",
            "  seed 7, 20 % of the requests: refuse, cut, delay, fail, die\n  0 of 30 requests have come\n"
            "  request 2, behind 1 other: delay 437\n  request 15, behind 14 others: cut 235\n"
            "  request 16, behind 15 others: cut 522\n  request 19, behind 18 others: delay 71\n"
            "  request 22, behind 21 others: delay 77\n  request 23, behind 22 others: die\n"
            "  request 28, behind 27 others: fail\n"},
        {"--seed 4294967295 --rate 100 --kinds die,cut,die --count 5",
            "  seed 4294967295, 100 % of the requests: cut, die\n  0 of 5 requests have come\n"
            "  request 1: cut 93\n  request 2, behind 1 other: cut 148\n  request 3, behind 2 others: cut 66\n"
            "  request 4, behind 3 others: cut 288\n  request 5, behind 4 others: die\n"},
    };
    const Daemon daemon;
    for (const auto& [given, listed] : cases) {
        EXPECT_EQ(daemon.run(std::string("chaos ") + given).output, "");
        EXPECT_EQ(daemon.run("order list").output, std::string("orders\n  (none)\nchaos\n") + listed);
    }
}

TEST(Chaos, MeetsRequestsAsPlannedBehindOrdersByHand)
{
    Daemon daemon;
    daemon.run("chaos --seed 4294967295 --rate 100 --kinds cut,die --count 6");
    daemon.run("order reply 'by hand' --skip 1");
    EXPECT_EQ(call(find_user("bob")).reply.size(), 93);
    EXPECT_EQ(call(find_user("bob")).reply, "by hand");
    EXPECT_EQ(call(find_user("bob")).reply.size(), 66);
    EXPECT_EQ(faults(daemon)[0], Json::parse(R"({"request": 4, "kind": "cut", "text": "288"})"));
    call(find_user("bob"));
    EXPECT_NE(call(delete_user("1002")).result, 0);
    EXPECT_EQ(WTERMSIG(daemon.stop(0)), SIGKILL);
    daemon.start();
    EXPECT_NE(call(find_user("bob")).result, 0) << "the plan goes on: 6 is a death, too";
    daemon.stop(0);
    daemon.start();
    EXPECT_THAT(call(find_user("bob")).reply, HasSubstr("<User_Id>1002</User_Id>")) << "it was for six";
    EXPECT_EQ(met(daemon), Json::parse(R"(["chaos 1: cut 93", "reply by hand", "chaos 3: cut 66", "chaos 4: cut 288",
        "chaos 5: die", "chaos 6: die", null])"));
}

TEST(Chaos, HasAnEnd)
{
    for (const char* end : {"chaos off", "seed"}) {
        const Daemon daemon;
        daemon.run("chaos --seed 1 --rate 100 --kinds fail");
        daemon.run("order clear");
        EXPECT_NE(call(find_user("bob")).result, 0) << "the plan is no order";
        end == std::string("seed") ? daemon.seed() : void(daemon.run(end));
        EXPECT_THAT(call(find_user("bob")).reply, HasSubstr("success")) << end;
        EXPECT_EQ(daemon.run("order list").output, "orders\n  (none)\nchaos\n  (off)\n") << end;
    }
}

TEST(Chaos, OfAStateFromBeforeIt)
{
    const Daemon daemon;
    SQLite::Database(daemon.path("state/state.db"), SQLite::OPEN_READWRITE).exec("DROP TABLE chaos");
    EXPECT_EQ(daemon.run("chaos --seed 1 --rate 100 --kinds no-reply").status, 0);
    EXPECT_TRUE(call(find_user("bob")).null);
}
