#include "tests/syscmd/operation_case.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <utility>

static std::ptrdiff_t openDescriptors()
{
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open));
}

std::string order(const std::string& what, int skip)
{
    return "boxwelld order " + what + " --skip " + std::to_string(skip);
}

Said access(const std::string& login, int is_owner, int is_sh)
{
    return said("AuthenticateUser: ACCESS REQUESTED", login, is_owner, is_sh);
}

Said asking(const std::string& name)
{
    return said("GetUserData: GetID", name);
}

Trace askingInVain(const std::string& name, int exchange)
{
    return {asking(name), said("GetUserData: GetUserData and User Group failed"),
        said("GetUserData: syscmd:request", sent(exchange)), said("GetUserData: syscmd:respond", answer(exchange))};
}

Said noRemoteUser(const std::string& name, int exchange)
{
    return said("DelNetwork: DelNetwork failed", sent(exchange), answer(exchange), "No remote user " + name);
}

/** The strict plug-in's statement about a parameter: it holds what it may not, or names another's account. */
static Said refusal(const std::string& operation, const std::string& parameter, const std::string& why)
{
    return said("checkParameters: " + why, operation, parameter);
}

/** A case as the strict plug-in answers it: what is here it refuses, all else is as ever. */
static Case strictly(const Case& asked)
{
    static const std::map<std::string, const char*> refused = {
        {"addremoteuser quoteMakesBadXml", "username"},
        {"deleteuser deletionRefusedAtSignBehindANul", "username"},
        {"initlocalsession bytesBehindANulPinNothing", "expires"},
        {"initlocalsession emptyToken", "token"},
        {"initlocalsession longestPath", "token"},
        {"initlocalsession pathTooLong", "token"},
        {"initlocalsession tokenIntoNowhere", "token"},
        {"upgradeusertosso passwordOfBytesBehindANul", "password_hash"},
    };
    const std::string operation = asked.params.empty() ? "" : asked.params[0];
    const auto at = refused.find(operation + ' ' + asked.name);
    const bool by_a_member = operation == "deleteuser" && asked.name == std::string("byAMember");
    if (at == refused.end() && !by_a_member)
        return asked;
    Case answered = lacking(asked.name, asked.params,
        by_a_member ? refusal(operation, "username", "not the member's own")
                    : refusal(operation, at->second, "holds what it may not"));
    answered.prepare = asked.prepare;
    if (by_a_member) {
        answered.credentials = asked.credentials;
        answered.access = asked.access;
        answered.requests = {"[bob]"};
    }
    return answered;
}

Case lacking(const char* name, const Texts& params, const Trace& refusal)
{
    const std::string rest = "error reading username/password/email params from request";
    const std::map<std::string, std::pair<std::string, Trace>> answers = {
        {"adduser", {"Add User: " + rest, {said("AddAccountHandler: 1325"), "code 1"}}},
        {"addremoteuser", {"AddRemoteUser: " + rest, {said("AddRemoteUserHandler: 1358"), "code 1"}}},
        {"deleteuser", {"Delete User: error reading username/password params from request",
                           {"code 1", said("DeleteAccountHandler: 1425")}}},
        {"updateuser", {"Update User: " + rest, {said("UpdateUserHandler: error reading"), "code 1"}}},
        {"upgradeusertosso", {"UpgradeUserToSSO: " + rest, {said("UpgradeUserToSSOHandler: 1477"), "code 1"}}},
        {"initlocalsession", {"InitLocalSession: error reading username/token/sessionid/seed params from request",
                                 {said("InitLocalSessionHandler: error reading"), "code 1"}}},
    };
    const auto& [response, trace] = answers.at(params[0]);
    const Trace begun = params[0] == "updateuser" ? Trace("code 0") : Trace();
    return {
        .name = name,
        .params = params,
        .code = CODE_FAILED,
        .response = response,
        .trace = {begun, refusal, trace, "response " + response},
    };
}

// The first entry of a process opens its socket to the journal, for good.
void Operation::SetUpTestSuite()
{
    frozen_time = NOW;
    RecordingTransaction none;
    resetDevice();
    command(none);
}

TEST_P(Operation, answersTracesAndTransacts)
{
    const Case asked = isStrict() ? strictly(GetParam()) : GetParam();
    resetDevice();
    if (!asked.prepare.empty())
        shell(asked.prepare);
    RecordingTransaction transaction;
    transaction.params = asked.params;
    if (!asked.credentials.empty())
        transaction.credentials = base64(asked.credentials);

    const auto descriptors = openDescriptors();
    const mode_t mask = umask(0); // modes are the plug-in's own
    command(transaction);
    umask(mask);

    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(transaction.code, asked.code);
    EXPECT_EQ(transaction.responses, Texts{asked.response});
    expectSaid({asked.access, asked.trace});
    const std::vector<Answered> told = exchanges();
    EXPECT_EQ(told.size(), asked.requests.size());
    for (std::size_t i = 0; i < std::min(told.size(), asked.requests.size()); ++i)
        EXPECT_NE(told[i].request.find(asked.requests[i]), std::string::npos)
            << "request " << i << "\n"
            << told[i].request << "\nhas no " << asked.requests[i];
    if (!asked.check.empty())
        shell(asked.check);
}
