#include "common/log.h"
#include "common/result.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/delete_user.h"
#include "syscmd/handler.h"

void DeleteAccountHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_NO_TRANSACTION(1391);
        return;
    }
    std::string parameters[2];
    if (!readParameters(*pTx, parameters)) {
        fail(*pTx, response, "Delete User: error reading username/password params from request");
        LOG_AT(1425, Error, "ERROR [syscmd:%s]: DeleteUser %s\n", __func__, UNREAD.data());
        return;
    }
    auto& [username, p2pusername] = parameters;

    const int result = DelUser(accountName(username).c_str(), p2pusername.c_str(), ANY_ACCOUNT);
    if (result == SUCCESS) {
        LOG_AT(1402, Debug, "[syscmd:%s: DelUser %s success\n", __func__, username.c_str());
    } else if (std::string_view(username).find('@') == std::string_view::npos) {
        LOG_AT(
            1415, Error, "ERROR [syscmd:%s]: DelUser %s failed with code=%d\n", __func__,
            username.c_str(), result
        );
        return fail(*pTx, response, "DeleteUser failed");
    }
    // A cloud user named by an e-mail address counts as deleted even if the deletion failed.
    succeed(*pTx, response);
}
