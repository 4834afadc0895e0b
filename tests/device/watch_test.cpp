#include "devkit/broker/watch/watch.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

TEST(Watch, ABlockTellsWhatHappened)
{
    RecordedCommand command;
    command.words = {"deleteuser", "", "a\033[2J"};
    command.time = 1'700'000'059.0625;
    command.statements = {
        {"ERROR", "execute.cpp", 1, "before\n"}, {"DEBUG", "delete_user.cpp", 2, "request=<?xml version=\"1.0\"?><a>"}};
    RecordedCall refused;
    refused.request = R"(<xs:transaction><xs:delete resource-id="7" resource-type="User">)";
    refused.reply = R"(<xs:response status="failure"><xs:error-details><![CDATA[no]]></xs:error-details>)";
    refused.microseconds = 1'250;
    RecordedCall failed;
    failed.result = -1;
    failed.error = EPROTO;
    command.calls = {refused, failed, {}};
    command.changes = {{"account", "7", {{"name", "bob"}}, {}}};
    const std::string BLOCK = R"(22:14:19.062 deleteuser "" a\x1b[2J, without credentials
    ERROR execute.cpp:1 before
  > delete User 7
  < failure: no, 1.2 ms
    DEBUG delete_user.cpp:2 request=...
  > a long request
  < the call failed: Protocol error, 0.0 ms
  > a long request
  < no reply, 0.0 ms
  - account 7: name bob
)";
    EXPECT_EQ(block_of(command), BLOCK + "  no answer: the process ended\n\n");
    command.login = "alice";
    command.answer = {"CODE_FAILED", std::nullopt, 3'000};
    EXPECT_NE(block_of(command).find("\\x1b[2J, as alice\n"), std::string::npos);
    EXPECT_TRUE(block_of(command).ends_with("bob\n  CODE_FAILED, no response, 3.0 ms\n\n"));
}

} // namespace
