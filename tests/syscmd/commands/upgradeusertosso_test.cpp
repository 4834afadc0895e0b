// "upgradeusertosso": each step is taken even if the one before failed.
#include "tests/syscmd/operation_case.h"

namespace {

const std::string FLAG = "/opt/skyhold/etc/.sso_upgraded";

Case upgraded(const char* name, const Texts& params, const std::string& prepare, const Texts& statements,
    const Texts& requests, const std::string& check)
{
    const std::string new_name = params[2].substr(0, 31);
    return {
        .name = name,
        .params = params,
        .prepare = prepare,
        .trace = joined({{"1443 syscmd:UpgradeUserToSSOHandler " + params[1] + " " + new_name}, statements,
            {"= code 0", "1455 [syscmd:UpgradeUserToSSOHandler]: UpgradeUserToSSO " + params[1] + " success",
                "= response success"}}),
        .requests = requests,
        .check = check,
    };
}

Case notUpgraded(const char* name, const Texts& params, const std::string& prepare, const Texts& statements,
    const std::string& result, const std::string& check)
{
    Case asked = upgraded(name, params, prepare, {}, {"Authorization: alice\r\n"}, check);
    asked.code = CODE_FAILED;
    asked.response = "UpgradeUserToSSO: error upgrading p2p user:" + params[1];
    asked.trace = joined({{asked.trace[0]}, statements,
        {"1461 ERROR [syscmd:UpgradeUserToSSOHandler]:UpgradeUserToSSO " + params[1] + " failed with code=" + result,
            "= code 1", "= response " + asked.response}});
    return asked;
}

const Texts BOB = {"upgradeusertosso", "bob", "bob@new", ""};
const Texts ALICE = {"upgradeusertosso", "alice", "alice@new", PAIR};
const std::string SAID_BOB = "* [syscmd:UpdateUser] username=bob@new, group=sky-hold, email=bob@new p2pusername=bob";
const std::string SAID_ALICE =
    "* [syscmd:UpdateUser] username=alice@new, smbhash=SMB, syshash=$1$salt$system, group=admin, "
    "email=alice@new p2pusername=alice";
const std::string UPDATE_FAILED = "982 ERROR [syscmd:UpgradeUserToSSO] failed updating user account";
const std::string FILE_FAILED = "989 ERROR [syscmd:UpgradeUserToSSO] failed updating skyhold owner file";
const std::string RENAMED = "grep -q '<owner>alice@new</owner>.*<p2powner>alice</p2powner>' " OWNER_FILE;

INSTANTIATE_TEST_SUITE_P(UpgradeToSSO, Operation,
    testing::Values(upgraded("keepsThePassword", BOB, "umask 022", {SAID_BOB}, {"<Group_Name><![CDATA[sky-hold]]>"},
                        "getent passwd bob@new && test -f " + FLAG + " && ! test -s " + FLAG +
                            " && grep -q '<owner>alice</owner>' " OWNER_FILE),
        upgraded("owner", ALICE, "", {SAID_ALICE}, {"<SysHash><![CDATA[$1$salt$system]]>"}, RENAMED),
        upgraded("cutsTheNameNotTheAddress", {"upgradeusertosso", "bob", NAME_40, ""}, "",
            {"* [syscmd:UpdateUser] username=" + NAME_31 + ", group=sky-hold, email=" + NAME_40 + " p2pusername=bob"},
            {"<Email_Address><![CDATA[" + NAME_40 + "]]>"}, "getent passwd " + NAME_31),
        upgraded("flagNotSet", BOB, "mkdir " + FLAG,
            {SAID_BOB, "998 [syscmd::UpgradeUserToSSO] failed setting SSOUpgradeFlag [Is a directory]"},
            {"Authorization"}, "rmdir " + FLAG),
        notUpgraded("refused", BOB, order("refuse busy"),
            {SAID_BOB, "* ERROR [syscmd:UpdateUser]: Update failed", "* ERROR [syscmd:UpdateUser]: MXL error busy",
                UPDATE_FAILED},
            "-2", "test -f " + FLAG),
        notUpgraded("ownerRefused", ALICE, order("fail"),
            {SAID_ALICE, "* ERROR [syscmd:UpdateUser]: process_request_bwdclient failed", UPDATE_FAILED}, "-2",
            "test -f " + FLAG + " && " + RENAMED),
        notUpgraded("ownerFileFailed", ALICE, "rm /var/lib/device/info/Serial", {SAID_ALICE, FILE_FAILED}, "-3",
            "test -f " + FLAG + " && ! test -e " OWNER_FILE),
        notUpgraded("ownerBothFailed", ALICE, "rm /var/lib/device/info/Model; " + order("no-reply"),
            {SAID_ALICE, "* ERROR [syscmd:UpdateUser]: respond is not initialized", UPDATE_FAILED, FILE_FAILED}, "-3",
            "test -f " + FLAG),
        Case{
            .name = "nobody",
            .params = {"upgradeusertosso", "zoe", "zoe@new", PAIR},
            .code = CODE_FAILED,
            .response = "UpgradeUserToSSO: failed retrieve local user by username:zoe",
            .trace = {"1443 syscmd:UpgradeUserToSSOHandler zoe zoe@new",
                "1470 ERROR [syscmd:UpgradeUserToSSOHandler]:failed retrieve local user by "
                "username: zoe",
                "= code 1", "= response UpgradeUserToSSO: failed retrieve local user by username:zoe"},
            .check = "! test -e " + FLAG,
        },
        Case{
            .name = "needsThreeParameters",
            .params = {"upgradeusertosso", "bob", "bob@new"},
            .code = CODE_FAILED,
            .response = "UpgradeUserToSSO: error reading username/password/email params from request",
            .trace = {"1477 ERROR [syscmd:UpgradeUserToSSOHandler]: error reading "
                      "username/password/email params from request",
                "= code 1",
                "= response UpgradeUserToSSO: error reading username/password/email params "
                "from request"},
        }),
    caseName);

} // namespace
