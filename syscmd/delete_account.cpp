#include "common/io.h"
#include "syscmd/handler.h"
#include "syscmd/parameters.h"
#include "syscmd/user_delete.h"

void DeleteAccountHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_AT(1391, Error, "[syscmd:DeleteAccountHandler] invalid input arguments");
        return;
    }
    std::string username;
    std::string p2pusername;
    if (!readParameters(*pTx, username, p2pusername)) {
        pTx->setCode(CODE_FAILED);
        response = "Delete User: error reading username/password params from request";
        LOG_AT(
            1425, Error,
            "ERROR [syscmd:DeleteAccountHandler]: DeleteUser error reading "
            "username/password/email params from request\n"
        );
        return;
    }

    const int result = DelUser(accountName(username).c_str(), p2pusername.c_str(), ANY_ACCOUNT);
    if (result == SUCCESS) {
        LOG_AT(1402, Debug, "[syscmd:DeleteAccountHandler: DelUser %s success\n", username.c_str());
        response = "success";
        pTx->setCode(CODE_SUCCEED);
        return;
    }
    // A cloud user named by an e-mail address counts as deleted even if the deletion failed.
    if (username.find('@') != std::string::npos) {
        response = "success";
        pTx->setCode(CODE_SUCCEED);
        return;
    }
    LOG_AT(
        1415, Error, "ERROR [syscmd:DeleteAccountHandler]: DelUser %s failed with code=%d\n",
        username.c_str(), result
    );
    response = "DeleteUser failed";
    pTx->setCode(CODE_FAILED);
}
