// "deleteuser": whom it finds, what it deletes, and what a failure looks like.
#include "tests/syscmd/operation_case.h"

namespace {

Case deletion(const char* name, const std::string& user, const std::string& prepare, const Texts& statements,
    const Texts& requests, const std::string& check)
{
    return {
        .name = name,
        .params = {"deleteuser", user, "p2p"},
        .prepare = prepare,
        .trace = joined({statements,
            {"1402 [syscmd:DeleteAccountHandler: DelUser " + user + " success", "= code 0", "= response success"}}),
        .requests = requests,
        .check = check,
    };
}

/** A deletion that fails; the answer depends on the at sign alone. */
Case failedDeletion(const char* name, const std::string& user, const std::string& ordered, const Texts& statements,
    const Texts& requests)
{
    Case asked = deletion(name, user, ordered, {}, requests, "getent passwd bob");
    if (user.find('@') != std::string::npos) {
        asked.trace = joined({statements, {"= code 0", "= response success"}});
        return asked;
    }
    asked.code = CODE_FAILED;
    asked.response = "DeleteUser failed";
    asked.trace =
        joined({statements, {"1415 ERROR [syscmd:DeleteAccountHandler]: DelUser " + user + " failed with code=-1",
                                "= code 1", "= response DeleteUser failed"}});
    return asked;
}

/** A reply with one record. */
std::string record(const std::string& name, const std::string& id, const std::string& group)
{
    return order("reply '<xs:response status=\"success\"><User id=\"7\"><User_Id>" + id +
                 "</User_Id><Group_Name><![CDATA[" + group + "]]></Group_Name><User_Name><![CDATA[" + name +
                 "]]></User_Name></User></xs:response>'");
}

const std::string NO_MATCH = "* ERROR [syscmd:GetUserData]: GetUserData and User Group failed";
const std::string NO_DATA = "* ERROR [syscmd:DelUser]: GetUserData failed";
const Texts BOB = {"[bob]", "resource-id=\"1002\""};

INSTANTIATE_TEST_SUITE_P(DeleteAccount, Operation,
    testing::Values(deletion("cloudAccount", "bob", "", {}, joined({BOB, {"UserName=\"p2p\""}}),
                        "! getent passwd bob && grep -q 'DelNetwork failed.*No remote user' "
                        "/var/log/shbroker.log"),
        deletion("anyOtherAccount", "dave", "", {}, {"[dave]", "resource-id=\"1004\"", "UserName=\"p2p\""},
            "! getent passwd dave"),
        deletion("firstBytesOfALongName", NAME_40, record(NAME_31, "1002", "sky-hold"), {},
            {"[" + NAME_31 + "]", "resource-id=\"1002\"", "UserName=\"p2p\""}, "! getent passwd bob"),
        deletion("idOfThePasswordDatabase", "dave", record("other", "7", "share"), {NO_MATCH},
            {"[dave]", "resource-id=\"1004\"", "UserName=\"p2p\""}, "! getent passwd dave"),
        deletion("leafUserMatchesAnyName", "zoe", record("leafuser_1", "1003", "sky-hold"), {},
            {"[zoe]", "resource-id=\"1003\"", "UserName=\"p2p\""}, "! getent passwd carol"),
        deletion("nobodyWithAGroup", "zoe", record("other", "7", "share"), {NO_MATCH}, {"[zoe]"}, "getent passwd bob"),
        deletion("nobodyWithoutAtSign", "zoe", record("other", "7", ""), {NO_MATCH}, {"[zoe]"}, ""),
        deletion("remoteUserNotReached", "bob", order("fail", 2), {"* ERROR [syscmd:DelNetwork]: SendMXLtoBWD failed"},
            joined({BOB, {"UserName=\"p2p\""}}), "! getent passwd bob"),
        failedDeletion("nobodyWithAtSign", "z@x", record("other", "7", ""), {NO_MATCH}, {"[z@x]", "UserName=\"p2p\""}),
        failedDeletion("noRecord", "zoe", "", {NO_DATA}, {"[zoe]"}),
        failedDeletion("noRecordAtSign", "z@x", "", {NO_DATA}, {"[z@x]"}),
        failedDeletion("deletionRefused", "bob", order("refuse busy", 1),
            {"* ERROR [syscmd:DelUser]: DelUser failed", "* ERROR [syscmd:DelUser]: busy"}, BOB),
        failedDeletion("deletionFailed", "bob", order("fail", 1),
            {"* ERROR [syscmd:DelUser]: process_request_bwdclient failed"}, BOB),
        failedDeletion("deletionUnanswered", "bob", order("no-reply", 1),
            {"* ERROR [syscmd:DelUser]: respond is not initialized"}, BOB),
        failedDeletion("queryRefused", "bob", order("refuse busy"),
            {"* ERROR [syscmd:GetUserData]: MXL error busy", NO_DATA}, {"[bob]"}),
        failedDeletion("queryRefusedWithoutEnd", "bob", order("reply '<xs:error-details><![CDATA[bu'"),
            {"* ERROR [syscmd:GetUserData]: MXL error bu", NO_DATA}, {"[bob]"}),
        failedDeletion("queryFailed", "bob", order("fail"),
            {"* ERROR [syscmd:GetUserData]: process_request_bwdclient failed", NO_DATA}, {"[bob]"}),
        failedDeletion("queryUnanswered", "bob", order("no-reply"),
            {"* ERROR [syscmd:GetUserData]: respond is NULL", NO_DATA}, {"[bob]"}),
        Case{
            .name = "byAMember",
            .params = {"deleteuser", "carol", ""},
            .credentials = "bob:secret",
            .trace = {"1402 [syscmd:DeleteAccountHandler: DelUser carol success", "= code 0", "= response success"},
            .requests = {"[bob]", "[carol]", "resource-id=\"1003\"", "UserName=\"\""},
            .check = "! getent passwd carol",
        },
        Case{
            .name = "needsTwoParameters",
            .params = {"deleteuser", "bob"},
            .code = CODE_FAILED,
            .response = "Delete User: error reading username/password params from request",
            .trace = {"= code 1",
                "1425 ERROR [syscmd:DeleteAccountHandler]: DeleteUser error reading "
                "username/password/email params from request",
                "= response Delete User: error reading username/password params from request"},
        }),
    caseName);

} // namespace
