#include "common/log.h"
#include "common/result.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/remote_user.h"
#include "syscmd/handler.h"

void AddRemoteUserHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_NO_TRANSACTION(1334);
        return;
    }
    std::string parameters[1];
    if (!readParameters(*pTx, parameters)) {
        LOG_AT(1358, Error, "ERROR [syscmd:%s]: AddRemoteUser %s\n", __func__, UNREAD.data());
        return fail(*pTx, response, "AddRemoteUser: ", UNREAD);
    }
    auto& [username] = parameters;

    const int result = AddNetwork(username.c_str(), "");
    if (result != SUCCESS) {
        LOG_AT(
            1351, Error, "ERROR [syscmd:%s] :AddRemoteUser %s failed with code=%d\n", __func__,
            username.c_str(), result
        );
        pTx->setCode(CODE_FAILED); // the response stays as it was
        return;
    }
    succeed(*pTx, response);
    LOG_AT(1346, Debug, "[syscmd:%s] :AddRemoteUser %s success\n", __func__, username.c_str());
}
