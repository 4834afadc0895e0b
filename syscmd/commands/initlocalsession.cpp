#include "common/log.h"
#include "syscmd/commands/command.h"
#include "syscmd/handler.h"
#include "syscmd/sessions/record.h"
#include "syscmd/sessions/sweep.h"

void InitLocalSessionHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG(Error, "[syscmd:InitLocalSessionHandler] invalid input arguments");
        return;
    }
    std::string parameters[3];
    if (!readParameters(*pTx, parameters)) {
        LOG(Error, "ERROR [syscmd:InitLocalSessionHandler]: %s\n", UNREAD);
        return fail(
            *pTx, response,
            "InitLocalSession: error reading username/token/sessionid/seed params from request"
        );
    }
    auto& [username, token, expires] = parameters;
    username = accountName(username);
    const char* user = username.c_str();
    LOG(Info, "[syscmd:InitLocalSessionHandler]: InitLocalSession %s", user);

    const bool pinned = expires == PINNED;
    CleanupObsoleteLocalSessions(pinned ? user : nullptr);
    UpdateLocalSessionRecords(token.c_str(), user, pinned ? PINNED : "");

    pTx->setCode(CODE_SUCCEED);
    response = "success";
    LOG(Debug, "[syscmd:InitLocalSessionHandler]: InitLocalSession %s success", user);
}
