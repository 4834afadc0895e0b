// What only the strict plug-in does with a command: whom a member may name, and what the log shows.
#include "tests/syscmd/operation_case.h"

namespace {

/** A member's command. */
Case bobs(Case asked)
{
    asked.credentials = "bob:secret";
    asked.access = {access("bob", 0, 1)};
    asked.requests.insert(asked.requests.begin(), "[bob]");
    return asked;
}

Case notHisOwn(const char* name, const Texts& params, const std::string& parameter)
{
    return bobs(lacking(name, params, said("checkParameters: not the member's own", params[0], parameter)));
}

/** Shell that makes the owner file name alice, and a remote owner or none. */
std::string owned(const std::string& p2powner)
{
    return "echo '<owner>alice</owner>" + p2powner + "' > " OWNER_FILE;
}

/** A member's remote-access user is the owner's, by more than 31 bytes. */
Case longRemoteOwner()
{
    Case asked = notHisOwn("takesALongRemoteOwner", {"deleteuser", "bob", NAME_40}, "p2pusername");
    asked.prepare = owned("<p2powner>" + NAME_40 + "</p2powner>");
    return asked;
}

/** A member who is renamed; nobody bears either name. */
Case renamed(const char* name, const std::string& email, const std::string& p2p)
{
    return bobs({
        .name = name,
        .params = {"upgradeusertosso", "bob", email, ""},
        .trace = {said("UpgradeUserToSSOHandler: 1443", "bob", email),
            said("UpdateUser: username=%s, group", email, "sky-hold", email, p2p),
            said("UpdateUser: syscmd:request", sent(1)), said("UpdateUser: syscmd:respond", answer(1)), "code 0",
            said("UpgradeUserToSSOHandler: 1455", "bob"), "response success"},
        .requests = {"Authorization: alice\r\n"},
    });
}

/** Nobody knows this login; the daemon is not asked. */
Case stranger(const char* name, const std::string& login, const std::string& shown)
{
    return {
        .name = name,
        .params = {"deleteuser", "bob", "bob"},
        .credentials = login,
        .code = CODE_FAILED,
        .response = "access denied",
        .access = {access(shown, 0, 0)},
        .trace = {said("AuthenticateUser: ACCESS DENIED", "deleteuser", shown, 0, 0), "response access denied",
            "code 1"},
    };
}

std::vector<Case> cases()
{
    if (!isStrict())
        return {};
    return {
        notHisOwn("updatesTheOwner", {"updateuser", "alice", PAIR, "bob", "x"}, "username"),
        notHisOwn("upgradesAnother", {"upgradeusertosso", "carol", "c@x", ""}, "username"),
        notHisOwn("recordsAnothersSession", {"initlocalsession", "carol", "t", "1"}, "username"),
        notHisOwn("longNameOfAnother", {"deleteuser", NAME_40, ""}, "username"),
        notHisOwn("takesTheOwnersName", {"updateuser", "bob", PAIR, "Alice", "bob"}, "email"),
        notHisOwn("takesAnAccountsName", {"updateuser", "bob", PAIR, "dave", "bob"}, "email"),
        notHisOwn("takesTheRemoteOwner", {"deleteuser", "bob", "alice-p2p"}, "p2pusername"),
        notHisOwn("movesAnother", {"updateuser", "bob", PAIR, "bob", "dave"}, "p2pusername"),
        longRemoteOwner(),
        bobs({
            .name = "deletesHimself",
            .params = {"deleteuser", "bob", ""},
            .prepare = owned(""),
            .trace = {asking("bob"), noRemoteUser("", 3), said("DeleteAccountHandler: 1402", "bob"), "code 0",
                "response success"},
            .requests = {"[bob]", "resource-id=\"1002\"", "UserName=\"\""},
        }),
        renamed("takesAFreeName", "bob@new", "bob"),
        renamed("keepsHisName", "bob", "bob"),
        stranger("loginOfTwoLines", "x\nERROR: y", "x\\x0aERROR"),
        stranger("loginOfMarkup", "x]]><b", "x]]><b"),
        stranger("longLogin", "\x1b\x7f\xc3\xa9\\" + std::string(1100, 'x'),
            "\\x1b\\x7f\xc3\xa9\\" + std::string(1008, 'x')),
        Case{
            .name = "operationOfTwoLines",
            .params = {"a\r\nb\t"},
            .code = CODE_FAILED,
            .response = "operation unknown",
            .access = {},
            .trace = {said("execute: 1644", "a\\x0d\\x0ab\\x09"), "code 1", "response operation unknown"},
        },
    };
}

INSTANTIATE_TEST_SUITE_P(Strict, Operation, testing::ValuesIn(cases()), caseName);

} // namespace
