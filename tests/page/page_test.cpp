#include "devkit/broker/page/page.h"
#include "devkit/broker/page/placing.h"
#include "devkit/broker/page/transaction_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using Lines = std::vector<std::string>;

const std::string ENVELOPE = R"(<?xml version="1.0"?> <xs:mxl src="d"> <xs:transaction id="trid"> )";
const std::string QUERY =
    ENVELOPE +
    R"(<xs:query id="opid" resource-id="" resource-type="User_Collection"> <xs:criterion> )"
    R"(<xs:equal property="/User/User_Name/"> <xs:value><![CDATA[zoe]]></xs:value></xs:equal></xs:criterion></xs:query>)";

TEST(Layout, NothingIsLeftOut)
{
    const struct {
        const char* text;
        Lines expected;
    } CASES[] = {
        {"", {}},
        {" \n", {}},
        {"<?xml?><a> <b>x y</b>\n<c/><d><![CDATA[<z>]]></d><e></e></a>",
            {"<?xml?>", "<a>", "  <b>x y</b>", "  <c/>", "  <d><![CDATA[<z>]]></d>", "  <e></e>", "</a>"}},
        {"Authorization: bob\r\n<a><!-- <b> --></a>", {"Authorization: bob", "<a>", "  <!-- <b> -->", "</a>"}},
        {"<a><b>cut", {"<a>", "  <b>cut"}},
        {"<a><b at=", {"<a>", "  <b at="}},
        {"<a><![CDATA[open", {"<a><![CDATA[open"}},
        {"</a></b><c>", {"</a>", "</b>", "<c>"}},
    };
    for (const auto& c : CASES)
        EXPECT_EQ(laid_out(c.text), c.expected) << c.text;
}

TEST(Layout, WordsForTransactions)
{
    const struct {
        std::string request, kind, summary;
    } CASES[] = {
        {QUERY, "query User_Collection", "query User_Collection zoe"},
        {ENVELOPE +
                R"(<xs:query resource-type="User_Collection"><xs:like property="/User/Email_Address/" value="z@x"/>)",
            "query User_Collection", "query User_Collection z@x"},
        {ENVELOPE + R"(<xs:add resource-type="User"><User><User_Name>bob</User_Name>)", "add User", "add User bob"},
        {ENVELOPE + R"(<xs:delete id="opid" resource-type="User" resource-id="1005"><keep/>)", "delete User",
            "delete User 1005"},
        {ENVELOPE + R"(<xs:add resource-type="User:Remote:App"><User UserName="p2p"/>)", "add User:Remote:App",
            "add User:Remote:App p2p"},
        {ENVELOPE + R"(<xs:set resource-id="CloudOwner" resource-type="CloudOwner"><User><User_Name/></User>)",
            "set CloudOwner", "set CloudOwner"},
        {"no request", "", "a request that is none"},
    };
    for (const auto& c : CASES) {
        EXPECT_EQ(kind_of(c.request), c.kind);
        EXPECT_EQ(summary_of(c.request), c.summary);
    }
    EXPECT_EQ(outcome_of(R"(<xs:response id="opid" status="success"></xs:response>)"), "success");
    EXPECT_EQ(
        outcome_of(R"(<x status="failure"><xs:error-details><![CDATA[a > b]]></xs:error-details>)"), "failure: a > b");
    EXPECT_EQ(outcome_of("cut"), "no status");
}

RecordedCall call(const std::string& request)
{
    RecordedCall made;
    made.request = request;
    return made;
}

TEST(Placing, AtTheRequestOfTheUnit)
{
    const std::string ADD = ENVELOPE + R"(<xs:add resource-type="User">)";
    const std::string BOB = ENVELOPE + R"(<xs:query resource-type="User_Collection"><xs:value>bob</xs:value>)";
    const std::string REMOTE = ENVELOPE + R"(<xs:delete resource-type="User:Remote:App">)";
    const struct {
        Lines requests;
        std::vector<std::pair<const char*, const char*>> statements; // unit and text
        std::vector<std::size_t> expected;
    } CASES[] = {
        {{}, {{"execute.cpp", ""}, {"query_user.cpp", ""}}, {0, 0}},
        {{QUERY}, {{"access.cpp", "login=alice"}}, {0}},
        {{QUERY}, {{"access.cpp", "login=zoe"}, {"query_user.cpp", ""}}, {1, 1}},
        {{BOB, QUERY}, {{"query_user.cpp", "username=zoe"}, {"query_user.cpp", "bob"}}, {2, 2}},
        {{QUERY, ADD}, {{"access.cpp", ""}, {"query_user.cpp", ""}, {"add_user.cpp", ""}, {"adduser.cpp", ""}},
            {0, 1, 2, 2}},
        {{QUERY, QUERY}, {{"query_user.cpp", "zoe"}, {"query_user.cpp", "zoe"}}, {1, 2}},
        {{QUERY, REMOTE, QUERY}, {{"remote_user.cpp", ""}, {"query_user.cpp", ""}, {"deleteuser.cpp", ""}}, {2, 3, 3}},
        {{QUERY}, {{"query_user.cpp", ""}, {"query_user.cpp", ""}}, {1, 1}},
        {{ADD}, {{"add_user.cpp", ""}, {"query_user.cpp", ""}}, {1, 1}},
    };
    for (const auto& c : CASES) {
        RecordedCommand command;
        for (const std::string& request : c.requests)
            command.calls.push_back(call(request));
        command.statements.emplace();
        for (const auto& [unit, text] : c.statements)
            command.statements->push_back({"DEBUG", unit, 1, text});
        EXPECT_EQ(places_of(command), c.expected);
    }
    EXPECT_TRUE(places_of(RecordedCommand{}).empty()); // without a log file
}

TEST(Page, HoldsTheDataAndNoMarkupOfTheRecording)
{
    const std::string HOSTILE = "</script><script>alert(1)</script><!--\xff";
    Recording recording;
    RecordedCommand command;
    command.words = {"adduser", HOSTILE};
    command.login = HOSTILE;
    command.before = Facts{{{"account", "1"}, {{"name", "bob"}}}};
    command.changes = {{"account", "1", {{"name", "bob"}}, {{"name", HOSTILE.substr(0, 20)}}}};
    command.answer = {"CODE_FAILED", HOSTILE, 1500};
    recording.commands = {command, command};
    (*recording.commands[1].before)[{"account", "1"}] = {{"name", HOSTILE.substr(0, 20)}};
    recording.commands[1].changes.clear();
    const std::string page = page_of(recording, "morning.jsonl");
    EXPECT_EQ(page.find("alert(1)</script>"), std::string::npos);
    EXPECT_EQ(page.find("http:"), std::string::npos);
    const std::string begin = R"(<script type="application/json" id="data">)";
    const auto at = page.find(begin) + begin.size();
    const auto data = nlohmann::json::parse(page.substr(at, page.find("</script>", at) - at));
    const auto& told = data["commands"];
    EXPECT_EQ(data["texts"][told[0]["words"][1].get<std::size_t>()], "</script><script>alert(1)</script><!--\uf7ff");
    EXPECT_EQ(told[0]["before"].size(), 1U);
    EXPECT_TRUE(told[1]["before"].is_null()); // it follows from the one before
    EXPECT_FALSE(told[0]["answer"]["carried_out"]);
}

} // namespace
