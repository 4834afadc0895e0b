// "deleteuser": whom it finds, what it deletes, and what a failure looks like.
#include "tests/syscmd/operation_case.h"

namespace {

const std::string P2P = "p2p-" + NAME_31; // is not cut
const std::string REMOTE = "UserName=\"" + P2P + "\"";

Case deletion(const char* name, const std::string& user, const std::string& prepare, const Trace& statements,
    const Texts& requests, const std::string& check)
{
    return {
        .name = name,
        .params = {"deleteuser", user, P2P},
        .prepare = prepare,
        .trace = {statements, said("DeleteAccountHandler: 1402", user), "code 0", "response success"},
        .requests = requests,
        .check = check,
    };
}

/** A deletion of what the daemon knows, or the system; the remote-access user is not there. */
Case deleted(const char* name, const std::string& user, const std::string& prepare, const Trace& found,
    const std::string& id, const std::string& check)
{
    return deletion(name, user, prepare, {found, noRemoteUser(P2P, 2)},
        {"[" + user.substr(0, 31) + "]", "resource-id=\"" + id + "\"", REMOTE}, check);
}

/** A deletion that fails; the answer depends on the at sign alone. */
Case failedDeletion(const char* name, const std::string& user, const std::string& ordered, const Trace& statements,
    const Texts& requests)
{
    Case asked = deletion(name, user, ordered, {}, requests, "getent passwd bob");
    if (user.find('@') != std::string::npos) {
        asked.trace = {statements, "code 0", "response success"};
        return asked;
    }
    asked.code = CODE_FAILED;
    asked.response = "DeleteUser failed";
    asked.trace = {statements, said("DeleteAccountHandler: 1415", user, -1), "code 1", "response DeleteUser failed"};
    return asked;
}

/** A reply with one record. */
std::string record(const std::string& name, const std::string& id, const std::string& group)
{
    return order("reply '<xs:response status=\"success\"><User id=\"7\"><User_Id>" + id +
                 "</User_Id><Group_Name><![CDATA[" + group + "]]></Group_Name><User_Name><![CDATA[" + name +
                 "]]></User_Name></User></xs:response>'");
}

/** GetUserData fails for the reason that `why` tells, if it says so. */
Trace unasked(const std::string& name, const Trace& why)
{
    return {asking(name), why, said("DelUser: GetUserData failed")};
}

const Texts BOB = {"[bob]", "resource-id=\"1002\""};

INSTANTIATE_TEST_SUITE_P(DeleteAccount, Operation,
    testing::Values(deleted("cloudAccount", "bob", "", {asking("bob")}, "1002", "! getent passwd bob"),
        deleted("anyOtherAccount", "dave", "", {asking("dave")}, "1004", "! getent passwd dave"),
        deleted("firstBytesOfALongName", NAME_40, record(NAME_31, "1002", "sky-hold"), {asking(NAME_31)}, "1002",
            "! getent passwd bob"),
        deleted("idOfThePasswordDatabase", "dave", record("other", "7", "share"), askingInVain("dave", 0), "1004",
            "! getent passwd dave"),
        deleted("recordOfThatNameInOtherCase", "dave", record("Dave", "1002", "share"), askingInVain("dave", 0), "1004",
            "! getent passwd dave"),
        deleted("recordOfALongerName", "dave", record("davey", "1002", "share"), askingInVain("dave", 0), "1004",
            "! getent passwd dave"),
        deleted("leafUserInsideAName", "dave", record("a_leafuser_1", "1002", "share"), askingInVain("dave", 0), "1004",
            "! getent passwd dave"),
        deleted("recordWithoutId", "dave", record("dave", "", "share"), askingInVain("dave", 0), "1004",
            "! getent passwd dave"),
        deleted("recordWithoutGroup", "dave", record("dave", "1002", ""), askingInVain("dave", 0), "1004",
            "! getent passwd dave"),
        deleted("leafUserMatchesAnyName", "zoe", record("leafuser_1", "1003", "sky-hold"), {asking("zoe")}, "1003",
            "! getent passwd carol"),
        deletion("nobodyWithAGroup", "zoe", record("other", "7", "share"), askingInVain("zoe", 0), {"[zoe]"},
            "getent passwd bob"),
        deletion("nobodyWithAtSignAndGroup", "z@x", record("other", "7", "share"), askingInVain("z@x", 0), {"[z@x]"},
            "getent passwd bob"),
        deletion("nobodyWithoutAtSign", "zoe", record("other", "7", ""), askingInVain("zoe", 0), {"[zoe]"}, ""),
        deletion("nobodyWithAtSignBehindTheName", NAME_31 + "@x", record("other", "7", ""), askingInVain(NAME_31, 0),
            {"[" + NAME_31 + "]"}, ""),
        deletion("remoteUserToo", "bob",
            R"(sed 's/"remote_users": \[/&{"name": ")" + P2P +
                R"(", "full_name": ""}/' )" SEED_FILE " | boxwelld seed -",
            {asking("bob")}, {"[bob]", "resource-id=\"1002\"", REMOTE}, "! boxwelld show | grep " + P2P),
        deletion("remoteUserNotReached", "bob", order("fail", 2), {asking("bob"), said("DelNetwork: SendMXLtoBWD")},
            {"[bob]", "resource-id=\"1002\"", REMOTE}, "! getent passwd bob"),
        deletion("remoteUserUnanswered", "bob", order("no-reply", 2), {asking("bob"), said("DelNetwork: SendMXLtoBWD")},
            {"[bob]", "resource-id=\"1002\"", REMOTE}, "! getent passwd bob"),
        failedDeletion("nobodyWithAtSign", "z@x", record("other", "7", ""),
            {askingInVain("z@x", 0), noRemoteUser(P2P, 1)}, {"[z@x]", REMOTE}),
        failedDeletion("noRecord", "zoe", "", unasked("zoe", {}), {"[zoe]"}),
        failedDeletion("noRecordAtSign", "z@x", "", unasked("z@x", {}), {"[z@x]"}),
        failedDeletion("noRecordAtSignBehindTheName", NAME_31 + "@x", "", unasked(NAME_31, {}), {"[" + NAME_31 + "]"}),
        failedDeletion("deletionRefused", "bob", order("refuse busy", 1),
            {asking("bob"), said("DelUser: DelUser failed"), said("DelUser: ]: %s", "busy")}, BOB),
        failedDeletion("deletionRefusedAtSignBehindANul", std::string("bob\0@", 5), order("refuse busy", 1),
            {asking("bob"), said("DelUser: DelUser failed"), said("DelUser: ]: %s", "busy")}, BOB),
        failedDeletion("deletionFailed", "bob", order("fail", 1),
            {asking("bob"), said("DelUser: process_request_bwdclient")}, BOB),
        failedDeletion("deletionUnanswered", "bob", order("no-reply", 1),
            {asking("bob"), said("DelUser: respond is not initialized")}, BOB),
        failedDeletion("queryRefused", "bob", order("refuse busy"),
            unasked("bob", {said("GetUserData: MXL error", "busy")}), {"[bob]"}),
        failedDeletion("queryRefusedWithoutEnd", "bob", order("reply '<xs:error-details><![CDATA[bu'"),
            unasked("bob", {said("GetUserData: MXL error", "bu")}), {"[bob]"}),
        failedDeletion("queryFailed", "bob", order("fail"),
            unasked("bob", {said("GetUserData: process_request_bwdclient")}), {"[bob]"}),
        failedDeletion("queryUnanswered", "bob", order("no-reply"),
            unasked("bob", {said("GetUserData: respond is NULL")}), {"[bob]"}),
        Case{
            .name = "byAMember",
            .params = {"deleteuser", "carol", ""},
            .credentials = "bob:secret",
            .access = {access("bob", 0, 1)},
            .trace = {asking("carol"), noRemoteUser("", 3), said("DeleteAccountHandler: 1402", "carol"), "code 0",
                "response success"},
            .requests = {"[bob]", "[carol]", "resource-id=\"1003\"", "UserName=\"\""},
            .check = "! getent passwd carol",
        },
        lacking("needsAllParameters", {"deleteuser", "bob"})),
    caseName);

} // namespace
