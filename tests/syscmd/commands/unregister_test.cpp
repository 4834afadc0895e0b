// "unregister": anyone may; what succeeds answers as if it had not.
#include "tests/syscmd/operation_case.h"

namespace {

Case unregistered(const char* name, const std::string& credentials, const std::string& check)
{
    return {
        .name = name,
        .params = {"unregister"},
        .credentials = credentials,
        .code = CODE_NOREPLY,
        .response = DEFAULT_TEXT,
        .access = {},
        .trace = {said("Unregister: 1190"), "code 6", said("UnregisterHandler: 1375"), "response " + DEFAULT_TEXT},
        .requests = {"resource-type=\"CloudOwner\""},
        .check = check,
    };
}

Case notUnregistered(const char* name, const std::string& ordered, const Said& why)
{
    Case asked = unregistered(name, "", "grep -q '<owner>alice</owner>' " OWNER_FILE);
    asked.prepare = order(ordered);
    asked.code = CODE_FAILED;
    asked.response = "unregister operation failed";
    asked.trace = {said("Unregister: 1190"), why, "code 1", said("UnregisterHandler: 1382", -1),
        "response unregister operation failed"};
    return asked;
}

INSTANTIATE_TEST_SUITE_P(Unregister, Operation,
    testing::Values(unregistered("byTheOwner", "alice:secret",
                        "boxwelld show --json | grep -qE '\"cloud_owner\": *(null|\"\")' && "
                        "grep -q '<owner>alice</owner>' " OWNER_FILE),
        unregistered("withoutCredentials", "", ""),
        notUnregistered("refused", "refuse busy", said("Unregister: 1233", "busy")),
        notUnregistered("refusedWithoutWords", "refuse-bare", said("Unregister: 1233", "")),
        notUnregistered("otherCase", "reply '<xs:response status=\"Success\">'", said("Unregister: 1233", "")),
        notUnregistered("callFailed", "fail", said("Unregister: 1207")),
        notUnregistered("noReply", "no-reply", said("Unregister: 1207"))),
    caseName);

} // namespace
