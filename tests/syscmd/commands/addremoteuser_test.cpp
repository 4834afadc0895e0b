// "addremoteuser": one transaction; a remote user who is there already is no failure.
#include "tests/syscmd/operation_case.h"

namespace {

const Said REQUEST = said("AddNetwork: 285", sent(0));
const Said REPLY = said("AddNetwork: 288", answer(0));

Case added(const char* name, const std::string& user, const std::string& prepare)
{
    return {
        .name = name,
        .params = {"addremoteuser", user},
        .prepare = prepare,
        .trace = {REQUEST, REPLY, "code 0", said("AddRemoteUserHandler: 1346", user), "response success"},
        .requests = {"<User FullName=\"\" UserName=\"" + user + "\"/>"},
    };
}

Case notAdded(const char* name, const std::string& user, const std::string& prepare, const Trace& why)
{
    Case asked = added(name, user, prepare);
    asked.code = CODE_FAILED;
    asked.response = DEFAULT_TEXT;
    asked.trace = {REQUEST, why, said("AddRemoteUserHandler: 1351", user, -1), "code 1", "response " + DEFAULT_TEXT};
    return asked;
}

const Trace REFUSED = {REPLY, said("AddNetwork: 307")};
const Trace UNSENT = {said("AddNetwork: 327")};

INSTANTIATE_TEST_SUITE_P(AddRemoteUser, Operation,
    testing::Values(added("registers", "zed", ""), added("longNameWhole", NAME_40, ""),
        added("alreadyThere", "zed", order("refuse 'zed: User already present.'")),
        notAdded("emptyName", "", "", REFUSED), notAdded("quoteMakesBadXml", "z\"<d", "", REFUSED),
        notAdded("refused", "zed", order("refuse 'already at work'"), REFUSED),
        notAdded("refusedWithoutWords", "zed", order("refuse-bare"), REFUSED),
        notAdded("callFailed", "zed", order("fail"), UNSENT), notAdded("noReply", "zed", order("no-reply"), UNSENT),
        lacking("needsAllParameters", {"addremoteuser"})),
    caseName);

} // namespace
