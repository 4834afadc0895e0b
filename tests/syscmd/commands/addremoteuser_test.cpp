// "addremoteuser" and "unregister".
#include "tests/syscmd/operation_case.h"

namespace {

const std::string DEFAULT_TEXT = "system command failed";

Case added(const char* name, const std::string& user, const std::string& prepare)
{
    return {
        .name = name,
        .params = {"addremoteuser", user},
        .prepare = prepare,
        .trace = {"= code 0", "1346 [syscmd:AddRemoteUserHandler] :AddRemoteUser " + user + " success",
            "= response success"},
        .requests = {"<User FullName=\"\" UserName=\"" + user + "\"/>"},
    };
}

Case notAdded(const char* name, const std::string& user, const std::string& prepare, const Texts& why)
{
    Case asked = added(name, user, prepare);
    asked.code = CODE_FAILED;
    asked.response = DEFAULT_TEXT;
    asked.trace =
        joined({why, {"1351 ERROR [syscmd:AddRemoteUserHandler] :AddRemoteUser " + user + " failed with code=-1",
                         "= code 1", "= response " + DEFAULT_TEXT}});
    return asked;
}

const Texts REFUSED = {"307 ERROR [syscmd:AddNetwork]: AddNetwork failed"};
const Texts UNSENT = {"327 ERROR [syscmd:AddNetwork]: SendMXLtoBWD failed"};

INSTANTIATE_TEST_SUITE_P(AddRemoteUser, Operation,
    testing::Values(added("registers", "zed", ""), added("longNameWhole", NAME_40, ""),
        added("alreadyThere", "zed", order("refuse 'User already present'")), notAdded("emptyName", "", "", REFUSED),
        notAdded("quoteMakesBadXml", "z\"<d", "", REFUSED),
        notAdded("refused", "zed", order("refuse 'no licence'"), REFUSED),
        notAdded("refusedWithoutWords", "zed", order("refuse-bare"), REFUSED),
        notAdded("callFailed", "zed", order("fail"), UNSENT), notAdded("noReply", "zed", order("no-reply"), UNSENT),
        Case{
            .name = "needsAName",
            .params = {"addremoteuser"},
            .code = CODE_FAILED,
            .response = "AddRemoteUser: error reading username/password/email params from request",
            .trace = {"1358 ERROR [syscmd:AddRemoteUserHandler]: AddRemoteUser error reading "
                      "username/password/email params from request",
                "= code 1",
                "= response AddRemoteUser: error reading username/password/email params "
                "from request"},
        }),
    caseName);

Case unregistered(const char* name, const std::string& credentials, const std::string& check)
{
    return {
        .name = name,
        .params = {"unregister"},
        .credentials = credentials,
        .code = CODE_NOREPLY,
        .response = DEFAULT_TEXT,
        .trace = {"= code 6", "1375 [syscmd:UnregisterHandler] :Unregister SUCCESS", "= response " + DEFAULT_TEXT},
        .requests = {"resource-type=\"CloudOwner\""},
        .check = check,
    };
}

Case notUnregistered(const char* name, const std::string& ordered, const std::string& line, const std::string& why)
{
    Case asked = unregistered(name, "", "grep -q '<owner>alice</owner>' " OWNER_FILE);
    asked.prepare = order(ordered);
    asked.code = CODE_FAILED;
    asked.response = "unregister operation failed";
    asked.trace = {line + " ERROR [syscmd:Unregister]:cloud_owner.cpp:" + line + " " + why, "= code 1",
        "1382 ERROR [syscmd:UnregisterHandler]: Unregister operation failed with code=-1",
        "= response unregister operation failed"};
    return asked;
}

INSTANTIATE_TEST_SUITE_P(Unregister, Operation,
    testing::Values(unregistered("byTheOwner", "alice:secret",
                        "boxwelld show --json | grep -qE '\"cloud_owner\": *(null|\"\")' && "
                        "grep -q '<owner>alice</owner>' " OWNER_FILE " && "
                        "grep -q 'DEBUG:cloud_owner.cpp:1190 Unregister' /var/log/shbroker.log"),
        unregistered("withoutCredentials", "", ""), notUnregistered("refused", "refuse busy", "1233", "busy"),
        notUnregistered("refusedWithoutWords", "refuse-bare", "1233", ""),
        notUnregistered("otherCase", "reply '<xs:response status=\"Success\">'", "1233", ""),
        notUnregistered("garbage", "reply garbage", "1233", ""),
        notUnregistered("callFailed", "fail", "1207", "process_request_bwdclient()"),
        notUnregistered("noReply", "no-reply", "1207", "process_request_bwdclient()")),
    caseName);

} // namespace
