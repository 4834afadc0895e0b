// Every null argument of every routine that has one to refuse: logged, refused, and nothing is touched.
#include "common/device/accounts.h"
#include "common/isowner.h"
#include "syscmd/commands/upgradeusertosso.h"
#include "syscmd/daemon/add_user.h"
#include "syscmd/daemon/conflicts.h"
#include "syscmd/daemon/delete_user.h"
#include "syscmd/daemon/query_user.h"
#include "syscmd/daemon/remote_user.h"
#include "syscmd/daemon/update_user.h"
#include "syscmd/handler.h"
#include "syscmd/sessions/record.h"
#include "tests/syscmd/on_device.h"

namespace {

char untouched[] = "untouched";
char* out = untouched;

struct Refusal {
    int (*call)();
    int result;
    Said said;
};
#define REFUSED(call, result, key)                                                                                     \
    Refusal                                                                                                            \
    {                                                                                                                  \
        [] { return call; }, result, said(key)                                                                         \
    }

TEST_F(OnDevice, nullArgumentsAreRefused)
{
    const Refusal table[] = {
        REFUSED(SendMXLtoBWD(nullptr, "x"), -1, "SendMXLtoBWD: invalid"),
        REFUSED(SendMXLtoBWD(&out, nullptr), -1, "SendMXLtoBWD: invalid"),
        REFUSED(GetMXLStatus(nullptr, "x"), -1, "GetMXLStatus: invalid"),
        REFUSED(GetMXLStatus(&out, nullptr), -1, "GetMXLStatus: invalid"),
        REFUSED(GetMXLErrorDetail(nullptr, "x"), -1, "GetMXLErrorDetail: invalid"),
        REFUSED(GetMXLErrorDetail(&out, nullptr), -1, "GetMXLErrorDetail: invalid"),
        REFUSED(GetUserIDByUsername(nullptr, "x"), -1, "GetUserIDByUsername: invalid"),
        REFUSED(GetUserIDByUsername(&out, nullptr), -1, "GetUserIDByUsername: invalid"),
        REFUSED(GetUserData(nullptr, &out, &out, "x"), -1, "GetUserData: invalid"),
        REFUSED(GetUserData(&out, nullptr, &out, "x"), -1, "GetUserData: invalid"),
        REFUSED(GetUserData(&out, &out, nullptr, "x"), -1, "GetUserData: invalid"),
        REFUSED(GetUserData(&out, &out, &out, nullptr), -1, "GetUserData: invalid"),
        REFUSED(UpdateUser({.user_id = nullptr, .username = "x", .email = "x"}), -1, "UpdateUser: invalid input"),
        REFUSED(UpdateUser({.user_id = "1", .username = nullptr, .email = "x"}), -1, "UpdateUser: invalid input"),
        REFUSED(UpdateUser({.user_id = "1", .username = "x", .email = nullptr}), -1, "UpdateUser: invalid input"),
        REFUSED(DelNetwork(nullptr), -1, "DelNetwork: invalid"),
        REFUSED(DelUser(nullptr, "x", 1), -1, "DelUser: invalid"),
        REFUSED(DelUser("x", nullptr, 1), -1, "DelUser: invalid"),
        REFUSED(AddUser(nullptr, nullptr, "x", "User"), -1, "AddUser: 435"),
        REFUSED(AddUser("x", nullptr, nullptr, "User"), -1, "AddUser: 435"),
        REFUSED(AddNetwork(nullptr, ""), -1, "AddNetwork: 274"),
        REFUSED(resolveLocalUserConflicts(nullptr, "x", "x"), -1, "resolveLocalUserConflicts: invalid"),
        REFUSED(resolveLocalUserConflicts("x", nullptr, "x"), -1, "resolveLocalUserConflicts: invalid"),
        REFUSED(renameLocalUserIfExists(nullptr, "x"), -1, "renameLocalUserIfExists: invalid"),
        REFUSED(UpgradeUserToSSO("1", nullptr, "x", "x", "x"), -1, "UpgradeUserToSSO: 975"),
        REFUSED(UpgradeUserToSSO("1", "x", nullptr, "x", "x"), -1, "UpgradeUserToSSO: 975"),
        REFUSED(UpgradeUserToSSO("1", "x", "x", "x", nullptr), -1, "UpgradeUserToSSO: 975"),
        REFUSED(UpdateLocalSessionRecords(nullptr, "x", "x"), -1, "UpdateLocalSessionRecords: invalid"),
        REFUSED(UpdateLocalSessionRecords("x", nullptr, "x"), -1, "UpdateLocalSessionRecords: invalid"),
        REFUSED(UpdateLocalSessionRecords("x", "x", nullptr), -1, "UpdateLocalSessionRecords: invalid"),
    };
    Trace expected;
    for (const auto& [call, result, statement] : table) {
        EXPECT_EQ(call(), result) << statement.row->format;
        expected.push_back(statement);
    }
    EXPECT_EQ(out, untouched);
    expectSaid(expected);
    EXPECT_TRUE(exchanges().empty());
}

TEST_F(OnDevice, nullTransactionsAreRefused)
{
    int is_owner = 7;
    int is_sh = 7;
    EXPECT_EQ(AuthenticateUser("adduser", nullptr, is_owner, is_sh), -2);
    EXPECT_EQ(is_owner + is_sh, 14);
    std::string response = "untouched";
    for (auto* handler : {AddAccountHandler, AddRemoteUserHandler, UnregisterHandler, DeleteAccountHandler,
             UpgradeUserToSSOHandler, UpdateUserHandler, InitLocalSessionHandler})
        handler(nullptr, response);
    EXPECT_EQ(response, "untouched");
    expectSaid({said("AuthenticateUser: 1251"), said("AddAccountHandler: 1295"), said("AddRemoteUserHandler: 1334"),
        said("UnregisterHandler: 1367"), said("DeleteAccountHandler: 1391"), said("UpgradeUserToSSOHandler: 1434"),
        said("UpdateUserHandler: invalid"), said("InitLocalSessionHandler: invalid")});
}

} // namespace
