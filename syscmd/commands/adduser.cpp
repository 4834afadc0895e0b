#include "common/log.h"
#include "common/result.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/add_user.h"
#include "syscmd/daemon/delete_user.h"
#include "syscmd/handler.h"

void AddAccountHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_NO_TRANSACTION(1295);
        return;
    }
    std::string parameters[3];
    if (!readParameters(*pTx, parameters)) {
        LOG_AT(1325, Error, "ERROR [syscmd:%s]: AddUser %s\n", __func__, UNREAD.data());
        return fail(*pTx, response, "Add User: ", UNREAD);
    }
    auto& [username, password_hash, email] = parameters;
    const std::string name = accountName(username);

    // An earlier cloud account of that name gives way; whether one did, the addition shows.
    DelUser(username.c_str(), username.c_str(), CLOUD_ACCOUNTS_ONLY);

    const int result = AddUser(name.c_str(), password_hash.c_str(), email.c_str(), "User");
    if (result != SUCCESS) {
        LOG_AT(
            1316, Error, "ERROR [syscmd:%s] :AddUser %s failed with code=%d\n", __func__,
            username.c_str(), result
        );
        return fail(*pTx, response, "AddUser failed");
    }
    succeed(*pTx, response);
    LOG_AT(1311, Debug, "[syscmd:%s] :AddUser %s success\n", __func__, username.c_str());
}
