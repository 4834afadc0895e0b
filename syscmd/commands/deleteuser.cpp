#include "common/io.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/delete_user.h"
#include "syscmd/handler.h"

#include <cstring>

namespace {

constexpr CommandWords HANDLER = {
    .file = __FILE_NAME__,
    .function = "DeleteAccountHandler",
    .unread = "DeleteUser ",
    .answer = "Delete User: error reading username/password params from request",
    .null_line = 1391,
    .unread_line = 1425,
    .parameters = 2,
    .code_first = true,
};

void remove(ITransaction& tx, std::string& response, const char* const* parameters)
{
    const char* username = parameters[0];
    AccountName name;
    const int result = DelUser(accountName(name, username), parameters[1], ANY_ACCOUNT);
    if (result == SUCCESS) {
        LOG_IN(
            HANDLER.function, 1402, Debug, "[syscmd:DeleteAccountHandler: DelUser %s success\n",
            username
        );
    } else if (strchr(username, '@') == nullptr) {
        LOG_IN(
            HANDLER.function, 1415, Error,
            "ERROR [syscmd:DeleteAccountHandler]: DelUser %s failed with code=%d\n", username,
            result
        );
        setResponse(response, "DeleteUser failed");
        tx.setCode(CODE_FAILED);
        return;
    }
    // A cloud user named by an e-mail address counts as deleted even if the deletion failed.
    setResponse(response, "success");
    tx.setCode(CODE_SUCCEED);
}

} // namespace

void DeleteAccountHandler(ITransaction* pTx, std::string& response)
{
    runCommand(pTx, response, HANDLER, remove);
}
