// "adduser": every failure of its exchange, and what becomes of the accounts.
#include "tests/syscmd/operation_case.h"

namespace {

/** No account of that name has to give way. */
Trace nobody(const std::string& name)
{
    return {asking(name), said("DelUser: GetUserData failed")};
}

Said adding(const std::string& name, const std::string& email)
{
    return said("AddUser: 474", name, "$1$salt$system", "SMB", email);
}

Trace added(const std::string& name)
{
    return {"code 0", said("AddAccountHandler: 1311", name), "response success"};
}

Trace notAdded(const std::string& name)
{
    return {said("AddAccountHandler: 1316", name, -1), "code 1", "response AddUser failed"};
}

/** "adduser" whose addition fails for the reason that the statements `why` tell. */
Case failedAddition(const char* name, const std::string& ordered, const Trace& why)
{
    return {
        .name = name,
        .params = {"adduser", "zoe", PAIR, "z@x"},
        .prepare = order(ordered, 1),
        .code = CODE_FAILED,
        .response = "AddUser failed",
        .trace = joined({nobody("zoe"), {adding("zoe", "z@x")}, why, notAdded("zoe")}),
        .requests = {"[zoe]", "<xs:add"},
    };
}

Trace refused(const std::string& detail)
{
    return {said("AddUser: 502"), said("AddUser: 504", detail)};
}

INSTANTIATE_TEST_SUITE_P(AddAccount, Operation,
    testing::Values(
        Case{
            .name = "creates",
            .params = {"adduser", "zoe", PAIR, "z@x"},
            .trace = joined({nobody("zoe"), {adding("zoe", "z@x")}, added("zoe")}),
            .requests = {"[zoe]", "<User_Name><![CDATA[zoe]]></User_Name>\t\t\t<SmbHash><![CDATA[SMB]]>"},
            .check = "getent passwd zoe && boxwelld show | grep -E 'zoe +sky-hold +locked'",
        },
        Case{
            .name = "replacesACloudAccount",
            .params = {"adduser", "bob", PAIR, "b@x"},
            .trace = joined({{asking("bob"), noRemoteUser("bob", 2), adding("bob", "b@x")}, added("bob")}),
            .requests = {"[bob]", "<xs:delete id=\"opid\" resource-id=\"1002\"", "UserName=\"bob\"", "<xs:add"},
            .check = "boxwelld show | grep -E 'bob +sky-hold +locked +b@x'",
        },
        Case{
            .name = "leavesAnotherGroupsAccount",
            .params = {"adduser", "dave", PAIR, "d@x"},
            .code = CODE_FAILED,
            .response = "AddUser failed",
            .trace = joined({{asking("dave"), adding("dave", "d@x"), said("AddUser: 498"),
                                 said("AddUser: 504", "User dave already exists")},
                notAdded("dave")}),
            .requests = {"[dave]", "<xs:add"},
            .check = "getent passwd dave",
        },
        Case{
            .name = "leavesTheSystemsAccount", // its id is known, its group is another record's
            .params = {"adduser", "bob", PAIR, "b@x"},
            .prepare = order(
                "reply '<xs:response status=\"success\"><User id=\"7\"><User_Id>7</User_Id>"
                "<Group_Name><![CDATA[sky-hol]]></Group_Name><User_Name><![CDATA[bo]]></User_Name></User>'"),
            .code = CODE_FAILED,
            .response = "AddUser failed",
            .trace = joined({askingInVain("bob", 0),
                {adding("bob", "b@x"), said("AddUser: 498"), said("AddUser: 504", "User bob already exists")},
                notAdded("bob")}),
            .requests = {"[bob]", "<xs:add"},
            .check = "getent passwd bob",
        },
        Case{
            .name = "cutsTheNameOfTheAccountOnly",
            .params = {"adduser", NAME_40, PAIR, "z@x"},
            .trace = joined({nobody(NAME_40), {adding(NAME_31, "z@x")}, added(NAME_40)}),
            .requests = {"[" + NAME_40 + "]", "[" + NAME_31 + "]"},
            .check = "getent passwd " + NAME_31,
        },
        Case{
            .name = "passesOnWhatIsBehindTheFirstColon",
            .params = {"adduser", "zo\xc3\xab", base64("a:b:c"), ""},
            .trace = joined(
                {nobody("zo\xc3\xab"), {said("AddUser: 474", "zo\xc3\xab", "b:c", "a", "")}, added("zo\xc3\xab")}),
            .requests = {"[zo\xc3\xab]", "<SysHash><![CDATA[b:c]]>"},
        },
        Case{
            .name = "refusesAnEmptyPair",
            .params = {"adduser", "zoe", "", "z@x"},
            .code = CODE_FAILED,
            .response = "AddUser failed",
            .trace = joined({nobody("zoe"), {said("AddUser: 455", "", "")}, notAdded("zoe")}),
            .requests = {"[zoe]"},
        },
        Case{
            .name = "refusesAPairWithoutColon",
            .params = {"adduser", "zoe", "YWJj", "z@x"},
            .code = CODE_FAILED,
            .response = "AddUser failed",
            .trace = joined({nobody("zoe"), {said("AddUser: 455", "abc", "YWJj")}, notAdded("zoe")}),
            .requests = {"[zoe]"},
        },
        Case{
            .name = "needsThreeParameters",
            .params = {"adduser", "zoe", PAIR},
            .code = CODE_FAILED,
            .response = "Add User: error reading username/password/email params from request",
            .trace = {said("AddAccountHandler: 1325"), "code 1",
                "response Add User: error reading username/password/email params from request"},
        },
        failedAddition("refused", "refuse 'disk full'", refused("disk full")),
        failedAddition("refusedWithoutWords", "refuse-bare", refused("")),
        failedAddition("replyOfGarbage", "reply hello", refused("")),
        failedAddition("replyOfOtherCase", "reply '<xs:response status=\"SUCCESS\">'", refused("")),
        failedAddition("replyWithStatusNotLast", "reply '<xs:response status=\"success\" id=\"1\">'", refused("")),
        failedAddition("replySelfClosing", "reply '<xs:response status=\"success\"/>'", refused("")),
        failedAddition("replyEmpty", "reply ''", refused("")), failedAddition("replyCutShort", "cut 60", refused("")),
        failedAddition("noReply", "no-reply", {said("AddUser: 522")}),
        failedAddition("callFailed", "fail", {said("AddUser: 527")})),
    caseName);

} // namespace
