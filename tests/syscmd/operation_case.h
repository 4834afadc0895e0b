/** One command on the private device, and all that it is expected to bring about. */
#pragma once

#include "tests/syscmd/device.h"
#include "tests/syscmd/frozen_time.h"
#include "tests/syscmd/trace.h"

#include <gtest/gtest.h>

#include <ostream>

/** The statement of a requester who is known. */
Said access(const std::string& login, int is_owner, int is_sh);

struct Case {
    const char* name;
    Texts params;
    std::string credentials = "alice:secret"; // before Base64; empty: none
    std::string prepare = "";                 // shell, on the device, beforehand
    TTransactionCode code = CODE_SUCCEED;
    std::string response = "success";
    Trace access = {::access("alice", 1, 1)};
    Trace trace = {};       // what follows
    Texts requests = {};    // a piece of each transaction
    std::string check = ""; // shell, on the device, afterwards: must succeed
};

inline std::ostream& operator<<(std::ostream& out, const Case& shown)
{
    return out << shown.name;
}

/** A command that lacks a parameter, or has one that the strict plug-in refuses, which it says first. */
Case lacking(const char* name, const Texts& params, const Trace& refusal = {});

/** Parameterised by Case; the one test of each operation. */
class Operation : public testing::TestWithParam<Case> {
  protected:
    static void SetUpTestSuite();
};

inline std::string caseName(const testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

/** "boxwelld order ORDER" for the request behind the first `skip` ones. */
std::string order(const std::string& what, int skip = 0);

/** GetUserData asks for an account; and the one record of the n-th exchange does not match it. */
Said asking(const std::string& name);
Trace askingInVain(const std::string& name, int exchange);

/** DelNetwork's statement about the n-th exchange: there is no such remote user. */
Said noRemoteUser(const std::string& name, int exchange);

inline const std::string DEFAULT_TEXT = "system command failed"; // where no operation says otherwise
inline const std::string NAME_31 = "abcdefghijklmnopqrstuvwxyz01234";
inline const std::string NAME_40 = NAME_31 + "567890123";
inline constexpr time_t NOW = 1898600000; // to the plug-in
inline const std::string PAIR = base64("SMB:$1$salt$system");
