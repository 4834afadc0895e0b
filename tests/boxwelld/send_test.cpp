// Requests sent by hand.
#include "tests/boxwelld/daemon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Send, PrintsTheReplyOrWhyThereIsNone)
{
    const std::string success = "status=\"success\"></xs:response></xs:transaction></xs:mxl>\n";
    const struct {
        const char* order; // for this request
        std::string request;
        int status;
        std::string output; // the end of it
    } cases[] = {
        {"", delete_user("1002"), 0, success},
        {"", "Authorization: alice\n" + delete_user("1002"), 0, success},
        {"", "Authorization: alice\r\n" + delete_user("1002") + '\n', 0, success},
        {"", "Authorization: alice", 0,
            "[Malformed request: the authorization line has no end]]></xs:error-details>"
            "</xs:response></xs:transaction></xs:mxl>\n"},
        {"reply 'as it is'", "?", 0, "as it is\n"},
        {"no-reply", "?", 0, "(no reply)\n"},
        {"fail", "?", 1, "boxwelld: the daemon closed the connection before there was a whole reply\n"},
        {"hang", "?", 1, "boxwelld: no reply within 30 s, or what BOXWELLD_TIMEOUT_MS says\n"},
    };
    const Daemon daemon;
    for (const auto& [order, request, status, output] : cases) {
        SCOPED_TRACE(request);
        daemon.seed();
        if (*order != '\0')
            daemon.run(std::string("order ") + order);
        daemon.write("request", request);
        setenv("BOXWELLD_TIMEOUT_MS", *order == 'h' ? "100" : "60000", 1);
        const Outcome sent = daemon.run("send " + daemon.path("request"));
        EXPECT_EQ(sent.status, status);
        EXPECT_THAT(sent.output, testing::EndsWith(output));
        EXPECT_EQ(daemon.state().at("accounts").size(), output == success ? 2 : 3) << "what it asks for is done";
    }
    setenv("BOXWELLD_TIMEOUT_MS", "60000", 1);
}

/** What a person copies out of the transcript is the request again. */
TEST(Send, TakesWhatTheTranscriptPrints)
{
    const Daemon daemon;
    call(set_user(1002, "<Email_Address><![CDATA[x  y]]></Email_Address>"));
    daemon.seed();
    const std::string copied = "transcript | sed '1d;/^<?xml.*?>$/{x;s/^/i/;/ii/{x;q};x}' | sed '$d'";
    call(set_user(1002, "<Email_Address><![CDATA[x  y]]></Email_Address>"));
    daemon.write("copied", daemon.run(copied).output);
    daemon.seed();
    EXPECT_THAT(
        daemon.read("copied"), AllOf(StartsWith("Authorization: alice\n<?xml"), HasSubstr("\n  <xs:transaction")));
    EXPECT_THAT(daemon.run("send - <" + daemon.path("copied")).output, HasSubstr("status=\"success\""));
    EXPECT_EQ(daemon.state().at("accounts")[1].at("email"), "x  y");
}

TEST(Send, NeedsADaemon)
{
    Daemon daemon;
    daemon.stop(SIGTERM);
    const Outcome sent = daemon.run("send /dev/null");
    EXPECT_EQ(sent.status, 1);
    EXPECT_EQ(sent.output,
        "boxwelld: no daemon listens at " + daemon.path("socket") + "; boxwelld revive starts a device's again\n");
}
