#include "common/log.h"
#include "syscmd/commands/command.h"
#include "syscmd/handler.h"
#include "syscmd/sessions/record.h"
#include "syscmd/sessions/sweep.h"

void InitLocalSessionHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_NO_TRANSACTION(__LINE__);
        return;
    }
    std::string parameters[3];
    if (!readParameters(*pTx, parameters)) {
        LOG(Error, "ERROR [syscmd:%s]: %s\n", __func__, UNREAD.data());
        return fail(
            *pTx, response,
            "InitLocalSession: error reading username/token/sessionid/seed params from request"
        );
    }
    auto& [username, token, expires] = parameters;
    const std::string name = accountName(username);
    const char* user = name.c_str();
    LOG(Info, "[syscmd:%s]: InitLocalSession %s", __func__, user);

    const bool pinned = std::string_view(expires) == PINNED;
    CleanupObsoleteLocalSessions(pinned ? user : nullptr);
    UpdateLocalSessionRecords(token.c_str(), user, pinned ? PINNED : "");

    succeed(*pTx, response);
    LOG(Debug, "[syscmd:%s]: InitLocalSession %s success", __func__, user);
}
