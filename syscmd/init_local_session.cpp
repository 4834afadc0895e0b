#include "common/io.h"
#include "syscmd/handler.h"
#include "syscmd/local_sessions.h"
#include "syscmd/parameters.h"

void InitLocalSessionHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG(Error, "[syscmd:InitLocalSessionHandler] invalid input arguments");
        return;
    }
    std::string username;
    std::string token;
    std::string expires;
    if (!readParameters(*pTx, username, token, expires)) {
        response =
            "InitLocalSession: error reading username/token/sessionid/seed params from request";
        LOG(Error,
            "ERROR [syscmd:InitLocalSessionHandler]: error reading username/password/email params "
            "from request\n");
        pTx->setCode(CODE_FAILED);
        return;
    }
    username = accountName(username);
    LOG(Info, "[syscmd:InitLocalSessionHandler]: InitLocalSession %s", username.c_str());

    CleanupObsoleteLocalSessions(expires == "0" ? username.c_str() : nullptr);
    UpdateLocalSessionRecords(token.c_str(), username.c_str(), expires.c_str());

    pTx->setCode(CODE_SUCCEED);
    response = "success";
    LOG(Debug, "[syscmd:InitLocalSessionHandler]: InitLocalSession %s success", username.c_str());
}
