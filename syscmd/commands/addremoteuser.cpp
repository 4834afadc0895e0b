#include "common/log.h"
#include "common/result.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/remote_user.h"
#include "syscmd/handler.h"

void AddRemoteUserHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_AT(1334, Error, "[syscmd:AddRemoteUserHandler] invalid input arguments");
        return;
    }
    std::string parameters[1];
    if (!readParameters(*pTx, parameters)) {
        LOG_AT(1358, Error, "ERROR [syscmd:AddRemoteUserHandler]: AddRemoteUser %s\n", UNREAD);
        return fail(*pTx, response, "AddRemoteUser: ", UNREAD);
    }
    auto& [username] = parameters;

    const int result = AddNetwork(username.c_str(), "");
    if (result != SUCCESS) {
        LOG_AT(
            1351, Error,
            "ERROR [syscmd:AddRemoteUserHandler] :AddRemoteUser %s failed with code=%d\n",
            username.c_str(), result
        );
        pTx->setCode(CODE_FAILED); // the response stays as it was
        return;
    }
    pTx->setCode(CODE_SUCCEED);
    response = "success";
    LOG_AT(
        1346, Debug, "[syscmd:AddRemoteUserHandler] :AddRemoteUser %s success\n", username.c_str()
    );
}
