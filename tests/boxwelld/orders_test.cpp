// Ordered replies as the client library's caller sees them.
#include "tests/boxwelld/daemon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

using testing::Eq;
using testing::HasSubstr;

TEST(Orders, EachKindGivesTheClientItsOutcome)
{
    const Daemon daemon;
    const struct {
        const char* order;
        int result;
        bool null;
        bool carried_out;
        testing::Matcher<std::string> reply;
    } cases[] = {
        {"refuse 'not ]]> today'", 0, false, false,
            HasSubstr("<xs:error-details><![CDATA[not ]] > today]]></xs:error-details>")},
        {"refuse-bare", 0, false, false, HasSubstr("status=\"failure\"></xs:response>")},
        {"reply '<odd>'", 0, false, false, Eq("<odd>")},
        {"reply ''", 0, false, false, Eq("")},
        {"no-reply", 0, true, false, Eq("")},
        {"cut 19", 0, false, true, Eq("<?xml version=\"1.0\"")},
        {"fail", -1, true, false, Eq("")},
    };
    for (const auto& [order, result, null, carried_out, reply] : cases) {
        SCOPED_TRACE(order);
        daemon.seed();
        EXPECT_EQ(daemon.run(std::string("order ") + order).status, 0);
        const Answer answer = call(delete_user("1002"));
        EXPECT_EQ(answer.result, result);
        EXPECT_EQ(answer.null, null);
        EXPECT_THAT(answer.reply, reply);
        EXPECT_EQ(daemon.state()["accounts"].size(), carried_out ? 2 : 3);
        EXPECT_THAT(call(find_user("alice")).reply, HasSubstr("success")) << "the order is over";
    }
}

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
