// "adduser": every failure of its exchange, and what becomes of the accounts.
#include "tests/syscmd/operation_case.h"

namespace {

const std::string NO_DATA = "* ERROR [syscmd:DelUser]: GetUserData failed";

std::string said474(const std::string& name, const std::string& email)
{
    return "474 [syscmd::AddUser] username=" + name + ", syshash=$1$salt$system, smbhash=SMB, email=" + email;
}

/** "adduser" whose addition fails for the reason that the statements `why` tell. */
Case failedAddition(const char* name, const std::string& ordered, const Texts& why)
{
    return {
        .name = name,
        .params = {"adduser", "zoe", PAIR, "z@x"},
        .prepare = order(ordered, 1),
        .code = CODE_FAILED,
        .response = "AddUser failed",
        .trace = joined({{NO_DATA, said474("zoe", "z@x")}, why,
            {"1316 ERROR [syscmd:AddAccountHandler] :AddUser zoe failed with code=-1", "= code 1",
                "= response AddUser failed"}}),
        .requests = {"[zoe]", "<xs:add"},
    };
}

const Texts NO_DETAIL = {"502 ERROR [syscmd:AddUser]: AddUser failed", "504 ERROR [syscmd:AddUser]: MXL error "};

INSTANTIATE_TEST_SUITE_P(AddAccount, Operation,
    testing::Values(
        Case{
            .name = "creates",
            .params = {"adduser", "zoe", PAIR, "z@x"},
            .trace = {NO_DATA, said474("zoe", "z@x"), "= code 0",
                "1311 [syscmd:AddAccountHandler] :AddUser zoe success", "= response success"},
            .requests = {"[zoe]", "<User_Name><![CDATA[zoe]]></User_Name>\t\t\t<SmbHash><![CDATA[SMB]]>"},
            .check = "getent passwd zoe && boxwelld show | grep -E 'zoe +sky-hold +locked'",
        },
        Case{
            .name = "replacesACloudAccount",
            .params = {"adduser", "bob", PAIR, "b@x"},
            .trace = {said474("bob", "b@x"), "= code 0", "1311 [syscmd:AddAccountHandler] :AddUser bob success",
                "= response success"},
            .requests = {"[bob]", "<xs:delete id=\"opid\" resource-id=\"1002\"", "UserName=\"bob\"", "<xs:add"},
            .check = "boxwelld show | grep -E 'bob +sky-hold +locked +b@x'",
        },
        Case{
            .name = "leavesAnotherGroupsAccount",
            .params = {"adduser", "dave", PAIR, "d@x"},
            .code = CODE_FAILED,
            .response = "AddUser failed",
            .trace = {said474("dave", "d@x"), "498 ERROR [syscmd:AddUser]: user already exists",
                "504 ERROR [syscmd:AddUser]: MXL error User dave already exists",
                "1316 ERROR [syscmd:AddAccountHandler] :AddUser dave failed with code=-1", "= code 1",
                "= response AddUser failed"},
            .requests = {"[dave]", "<xs:add"},
            .check = "getent passwd dave",
        },
        Case{
            .name = "cutsTheNameOfTheAccountOnly",
            .params = {"adduser", NAME_40, PAIR, "z@x"},
            .trace = {NO_DATA, said474(NAME_31, "z@x"), "= code 0",
                "1311 [syscmd:AddAccountHandler] :AddUser " + NAME_40 + " success", "= response success"},
            .requests = {"[" + NAME_40 + "]", "[" + NAME_31 + "]"},
            .check = "getent passwd " + NAME_31,
        },
        Case{
            .name = "passesOnWhatIsBehindTheFirstColon",
            .params = {"adduser", "zo\xc3\xab", base64("a:b:c"), ""},
            .trace = {NO_DATA, "474 [syscmd::AddUser] username=zo\xc3\xab, syshash=b:c, smbhash=a, email=", "= code 0",
                "1311 [syscmd:AddAccountHandler] :AddUser zo\xc3\xab success", "= response success"},
            .requests = {"[zo\xc3\xab]", "<SysHash><![CDATA[b:c]]>"},
        },
        Case{
            .name = "refusesAnEmptyPair",
            .params = {"adduser", "zoe", "", "z@x"},
            .code = CODE_FAILED,
            .response = "AddUser failed",
            .trace = {NO_DATA, "455 ERROR [syscmd:AddUser] invalid hash value []",
                "1316 ERROR [syscmd:AddAccountHandler] :AddUser zoe failed with code=-1", "= code 1",
                "= response AddUser failed"},
            .requests = {"[zoe]"},
        },
        Case{
            .name = "needsThreeParameters",
            .params = {"adduser", "zoe", PAIR},
            .code = CODE_FAILED,
            .response = "Add User: error reading username/password/email params from request",
            .trace = {"1325 ERROR [syscmd:AddAccountHandler]: AddUser error reading "
                      "username/password/email params from request",
                "= code 1", "= response Add User: error reading username/password/email params from request"},
        },
        failedAddition("refused", "refuse 'disk full'",
            {"502 ERROR [syscmd:AddUser]: AddUser failed", "504 ERROR [syscmd:AddUser]: MXL error disk full"}),
        failedAddition("refusedWithoutWords", "refuse-bare", NO_DETAIL),
        failedAddition("replyOfGarbage", "reply hello", NO_DETAIL),
        failedAddition("replyOfOtherCase", "reply '<xs:response status=\"SUCCESS\">'", NO_DETAIL),
        failedAddition("replyWithStatusNotLast", "reply '<xs:response status=\"success\" id=\"1\">'", NO_DETAIL),
        failedAddition("replySelfClosing", "reply '<xs:response status=\"success\"/>'", NO_DETAIL),
        failedAddition("replyEmpty", "reply ''", NO_DETAIL), failedAddition("replyCutShort", "cut 60", NO_DETAIL),
        failedAddition("noReply", "no-reply", {"522 ERROR [syscmd:AddUser]: respond is NULL"}),
        failedAddition("callFailed", "fail", {"527 ERROR [syscmd:AddUser]: process_request_bwdclient failed"})),
    caseName);

} // namespace
