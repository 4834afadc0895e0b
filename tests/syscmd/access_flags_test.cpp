// What the check of the requester tells its caller; access_test.cpp tells who passes.
#include "syscmd/handler.h"
#include "tests/syscmd/on_device.h"

namespace {

TEST_F(OnDevice, flagsOfARequester)
{
    const struct {
        const char* operation;
        const char* login;
        int result, is_owner, is_sh;
    } table[] = {
        {"deleteuser", "alice", 0, 1, 1},
        {"adduser", "bob", 0, 0, 1},
        {"updateuser", "mallory", -1, 0, 0},
        {"unregister", "alice", 0, 7, 7}, // unchecked
        {"Adduser", "mallory", 0, 7, 7},
    };
    for (const auto& row : table) {
        RecordingTransaction transaction;
        transaction.credentials = base64(row.login);
        int is_owner = 7;
        int is_sh = 7;
        EXPECT_EQ(AuthenticateUser(row.operation, &transaction, is_owner, is_sh), row.result) << row.login;
        EXPECT_EQ(is_owner, row.is_owner) << row.login;
        EXPECT_EQ(is_sh, row.is_sh) << row.login;
        EXPECT_EQ(transaction.calls.size(), row.is_sh == 7 ? 0 : 1) << row.operation;
    }
}

} // namespace
