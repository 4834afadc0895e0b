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

/** An addition that fails for the reason that the statements tell. */
Case notAdded(const char* name, const Texts& params, const std::string& prepare, const Trace& statements,
    const Texts& requests, const std::string& check)
{
    return {
        .name = name,
        .params = params,
        .prepare = prepare,
        .code = CODE_FAILED,
        .response = "AddUser failed",
        .trace = {statements, said("AddAccountHandler: 1316", params[1], -1), "code 1", "response AddUser failed"},
        .requests = requests,
        .check = check,
    };
}

const Texts ZOE = {"adduser", "zoe", PAIR, "z@x"};

Case failedAddition(const char* name, const std::string& ordered, const Trace& why)
{
    return notAdded(name, {"adduser", NAME_40, PAIR, "z@x"}, order(ordered, 1),
        {nobody(NAME_40), adding(NAME_31, "z@x"), why}, {"[" + NAME_40 + "]", "<xs:add"}, "");
}

Case badPair(const char* name, const std::string& pair, const std::string& decoded)
{
    return notAdded(name, {"adduser", "zoe", pair, "z@x"}, "", {nobody("zoe"), said("AddUser: 455", decoded, pair)},
        {"[zoe]"}, "! getent passwd zoe");
}

/** The addition of an account that is there, and stays. */
Case taken(const char* name, const std::string& user, const std::string& prepare, const Trace& found)
{
    return notAdded(name, {"adduser", user, PAIR, "d@x"}, prepare,
        {found, adding(user, "d@x"), said("AddUser: 498"), said("AddUser: 504", "User " + user + " already exists")},
        {"[" + user + "]", "<xs:add"}, "getent passwd " + user);
}

/** A reply with one record. */
std::string record(const std::string& name, const std::string& group)
{
    return order("reply '<xs:response status=\"success\"><User id=\"7\"><User_Id>1002</User_Id><Group_Name><![CDATA[" +
                 group + "]]></Group_Name><User_Name><![CDATA[" + name + "]]></User_Name></User>'");
}

/** The system knows its id; the group is another record's. */
Case leavesTheSystemsAccount(const char* name, const std::string& group)
{
    return taken(name, "bob", record("bo", group), askingInVain("bob", 0));
}

Trace refused(const std::string& detail)
{
    return {said("AddUser: 502"), said("AddUser: 504", detail)};
}

INSTANTIATE_TEST_SUITE_P(AddAccount, Operation,
    testing::Values(
        Case{
            .name = "creates",
            .params = ZOE,
            .trace = {nobody("zoe"), adding("zoe", "z@x"), added("zoe")},
            .requests = {"[zoe]", "<User_Name><![CDATA[zoe]]></User_Name>\t\t\t<SmbHash><![CDATA[SMB]]>"},
            .check = "getent passwd zoe && boxwelld show | grep -E 'zoe +sky-hold +locked'",
        },
        Case{
            .name = "replacesACloudAccount",
            .params = {"adduser", "bob", PAIR, "b@x"},
            .trace = {asking("bob"), noRemoteUser("bob", 2), adding("bob", "b@x"), added("bob")},
            .requests = {"[bob]", "<xs:delete id=\"opid\" resource-id=\"1002\"", "UserName=\"bob\"", "<xs:add"},
            .check = "boxwelld show | grep -E 'bob +sky-hold +locked +b@x'",
        },
        Case{
            .name = "cutsTheNameOfTheAccountOnly",
            .params = {"adduser", NAME_40, PAIR, "z@x"},
            .prepare = record(NAME_40, "sky-hold"),
            .trace = {asking(NAME_40), noRemoteUser(NAME_40, 2), adding(NAME_31, "z@x"), added(NAME_40)},
            .requests = {"[" + NAME_40 + "]", "<xs:delete", "UserName=\"" + NAME_40 + "\"", "[" + NAME_31 + "]"},
            .check = "getent passwd " + NAME_31,
        },
        Case{
            .name = "passesOnWhatIsBehindTheFirstColon",
            .params = {"adduser", "zo\xc3\xab", base64("a:b:c"), ""},
            .trace = {nobody("zo\xc3\xab"), said("AddUser: 474", "zo\xc3\xab", "b:c", "a", ""), added("zo\xc3\xab")},
            .requests = {"[zo\xc3\xab]", "<SysHash><![CDATA[b:c]]>"},
        },
        lacking("needsAllParameters", {"adduser", "zoe", PAIR}),
        taken("leavesAnotherGroupsAccount", "dave", "", asking("dave")),
        leavesTheSystemsAccount("ofAShorterGroup", "sky-hol"), leavesTheSystemsAccount("ofALongerGroup", "sky-holders"),
        leavesTheSystemsAccount("ofTheGroupInOtherCase", "Sky-hold"), badPair("emptyPair", "", ""),
        badPair("pairWithoutColon", "YWJj", "abc"),
        failedAddition("refused", "refuse 'disk full'", refused("disk full")),
        failedAddition("refusedWithoutWords", "refuse-bare", refused("")),
        failedAddition("replyOfGarbage", "reply hello", refused("")),
        failedAddition("replyOfALongerStatus", "reply '<xs:response status=\"success!\">'", refused("")),
        failedAddition("replyOfOtherCase", "reply '<xs:response status=\"SUCCESS\">'", refused("")),
        failedAddition("replyEmpty", "reply ''", refused("")), failedAddition("replyCutShort", "cut 60", refused("")),
        failedAddition("noReply", "no-reply", said("AddUser: 522")),
        failedAddition("callFailed", "fail", said("AddUser: 527"))),
    caseName);

} // namespace
