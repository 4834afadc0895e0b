// "upgradeusertosso": each step is taken even if the one before failed.
#include "tests/syscmd/operation_case.h"

namespace {

const std::string FLAG = "/opt/skyhold/etc/.sso_upgraded";

/** An upgrade in one exchange, of which INFO tells; behind it what else is said. */
Trace upgrading(const Texts& params, const Said& info, const Trace& rest)
{
    return {said("UpgradeUserToSSOHandler: 1443", params[1], params[2].substr(0, 31)), info,
        said("UpdateUser: syscmd:request", sent(0)), rest};
}

Case upgraded(const char* name, const Texts& params, const std::string& prepare, const Said& info,
    const Trace& statements, const Texts& requests, const std::string& check)
{
    return {
        .name = name,
        .params = params,
        .prepare = prepare,
        .trace = {upgrading(params, info, {said("UpdateUser: syscmd:respond", answer(0))}), statements, "code 0",
            said("UpgradeUserToSSOHandler: 1455", params[1]), "response success"},
        .requests = requests,
        .check = check,
    };
}

Case notUpgraded(const char* name, const Texts& params, const std::string& prepare, const Trace& trace,
    const int result, const std::string& check)
{
    const std::string response = "UpgradeUserToSSO: error upgrading p2p user:" + params[1];
    return {
        .name = name,
        .params = params,
        .prepare = prepare,
        .code = CODE_FAILED,
        .response = response,
        .trace = {trace, said("UpgradeUserToSSOHandler: 1461", params[1], result), "code 1", "response " + response},
        .requests = {"Authorization: alice\r\n"},
        .check = check,
    };
}

Said keeping(const std::string& name, const std::string& email)
{
    return said("UpdateUser: username=%s, group", name, "sky-hold", email, "bob");
}

const Texts BOB = {"upgradeusertosso", "bob", "bob@new", ""};
const Texts ALICE = {"upgradeusertosso", "alice", "alice@new", PAIR};
const Said BOB_INFO = keeping("bob@new", "bob@new");
const Said ALICE_INFO = said(
    "UpdateUser: syshash=%s, group=%s, email", "alice@new", "SMB", "$1$salt$system", "admin", "alice@new", "alice");
const Said REPLY = said("UpdateUser: syscmd:respond", answer(0));
const Said UPDATE_FAILED = said("UpgradeUserToSSO: 982");
const Said FILE_FAILED = said("UpgradeUserToSSO: 989");
const std::string RENAMED = "grep -q '<owner>alice@new</owner>.*<p2powner>alice</p2powner>' " OWNER_FILE;
const std::string FLAGGED = "test -f " + FLAG;

INSTANTIATE_TEST_SUITE_P(UpgradeToSSO, Operation,
    testing::Values(upgraded("keepsThePassword", BOB, "", BOB_INFO, {}, {"<Group_Name><![CDATA[sky-hold]]>"},
                        "getent passwd bob@new && test \"$(stat -c %a-%s " + FLAG + ")\" = 777-0" +
                            " && grep -q '<owner>alice</owner>' " OWNER_FILE),
        upgraded("owner", ALICE, "echo old > " + FLAG, ALICE_INFO, {}, {"<SysHash><![CDATA[$1$salt$system]]>"},
            RENAMED + " && " + FLAGGED + " && ! test -s " + FLAG),
        upgraded("cutsTheNameNotTheAddress", {"upgradeusertosso", "bob", NAME_40, ""}, "", keeping(NAME_31, NAME_40),
            {}, {"<Email_Address><![CDATA[" + NAME_40 + "]]>"}, "getent passwd " + NAME_31),
        upgraded("flagNotSet", BOB, "mkdir " + FLAG, BOB_INFO, {said("UpgradeUserToSSO: 998", "Is a directory")},
            {"Authorization"}, "rmdir " + FLAG),
        notUpgraded("refused", BOB, order("refuse busy"),
            upgrading(BOB, BOB_INFO,
                {REPLY, said("UpdateUser: refused: another"), said("UpdateUser: MXL error", "busy"), UPDATE_FAILED}),
            -2, FLAGGED),
        notUpgraded("ownerRefused", ALICE, order("fail"),
            upgrading(ALICE, ALICE_INFO, {said("UpdateUser: process_request_bwdclient"), UPDATE_FAILED}), -2,
            FLAGGED + " && " + RENAMED),
        notUpgraded("ownerFileFailed", ALICE, "rm /var/lib/device/info/Serial",
            upgrading(ALICE, ALICE_INFO, {REPLY, FILE_FAILED}), -3, FLAGGED + " && ! test -e " OWNER_FILE),
        notUpgraded("ownerBothFailed", ALICE, "rm /var/lib/device/info/Model; " + order("no-reply"),
            upgrading(ALICE, ALICE_INFO, {said("UpdateUser: respond is not initialized"), UPDATE_FAILED, FILE_FAILED}),
            -3, FLAGGED),
        Case{
            .name = "passwordOfBytesBehindANul",
            .params = {"upgradeusertosso", "bob", "bob@new", std::string("\0x", 2)},
            .code = CODE_FAILED,
            .response = "UpgradeUserToSSO: error upgrading p2p user:bob",
            .trace = {said("UpgradeUserToSSOHandler: 1443", "bob", "bob@new"),
                said("UpdateUser: invalid hash value", "", ""), UPDATE_FAILED,
                said("UpgradeUserToSSOHandler: 1461", "bob", -2), "code 1",
                "response UpgradeUserToSSO: error upgrading p2p user:bob"},
            .check = FLAGGED,
        },
        Case{
            .name = "nobodyOfALongName",
            .params = {"upgradeusertosso", NAME_40, "zoe@new", PAIR},
            .code = CODE_FAILED,
            .response = "UpgradeUserToSSO: failed retrieve local user by username:" + NAME_40,
            .trace = {said("UpgradeUserToSSOHandler: 1443", NAME_40, "zoe@new"),
                said("UpgradeUserToSSOHandler: 1470", NAME_40), "code 1",
                "response UpgradeUserToSSO: failed retrieve local user by username:" + NAME_40},
            .check = "! test -e " + FLAG,
        },
        lacking("needsAllParameters", {"upgradeusertosso", "bob", "bob@new"})),
    caseName);

} // namespace
