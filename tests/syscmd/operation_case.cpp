#include "tests/syscmd/operation_case.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

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
    const Case& asked = GetParam();
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
