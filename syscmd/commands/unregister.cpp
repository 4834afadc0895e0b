#include "common/log.h"
#include "common/result.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/cloud_owner.h"
#include "syscmd/handler.h"

void UnregisterHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_NO_TRANSACTION(1367);
        return;
    }

    const int result = Unregister();
    if (result != SUCCESS) {
        fail(*pTx, response, "unregister operation failed");
        LOG_AT(
            1382, Error, "ERROR [syscmd:%s]: Unregister operation failed with code=%d\n", __func__,
            result
        );
        return;
    }
    pTx->setCode(CODE_NOREPLY); // nobody is left to read a response: it stays as it was
    LOG_AT(1375, Info, "[syscmd:%s] :Unregister SUCCESS\n", __func__);
}
