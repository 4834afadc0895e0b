#include "syscmd/upgrade_to_sso.h"

#include "common/io.h"
#include "liblst/owned.h"
#include "syscmd/handler.h"
#include "syscmd/owner_query.h"
#include "syscmd/parameters.h"
#include "syscmd/user_query.h"
#include "syscmd/user_update.h"

#include <cerrno>

int UpgradeUserToSSO(
    const char* user_id,
    const char* p2pusername,
    const char* ssousername,
    const char* ssopassword,
    const char* email
)
{
    if (p2pusername == nullptr || ssousername == nullptr || email == nullptr) {
        LOG_AT(975, Error, "ERROR [syscmd:UpgradeUserToSSO] invalid input arguments\n");
        return UPGRADE_INVALID_ARGUMENT;
    }
    int is_owner = 0;
    const char* group = getGroupByUsername(p2pusername, &is_owner);

    int result = SUCCESS;
    if (UpdateUser(user_id, ssousername, ssopassword, group, email, p2pusername) != SUCCESS) {
        LOG_AT(982, Error, "ERROR [syscmd:UpgradeUserToSSO] failed updating user account\n");
        result = UPGRADE_UPDATE_FAILED;
    }
    if (is_owner == 1 && createOwnerFile(true, ssousername, p2pusername, OWNER_FILE) != SUCCESS) {
        LOG_AT(989, Error, "ERROR [syscmd:UpgradeUserToSSO] failed updating skyhold owner file\n");
        result = UPGRADE_OWNER_FILE_FAILED;
    }
    if (setSSOUpgradeFlag() != SUCCESS) {
        ErrorText text = {};
        LOG_AT(
            998, Error, "[syscmd::UpgradeUserToSSO] failed setting SSOUpgradeFlag [%s]\n",
            errorText(text, errno)
        );
    }
    return result;
}

void UpgradeUserToSSOHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_AT(1434, Error, "[syscmd:UpgradeUserToSSOHandler] invalid input arguments");
        return;
    }
    std::string p2pusername;
    std::string email;
    std::string ssopassword;
    if (!readParameters(*pTx, p2pusername, email, ssopassword)) {
        response = "UpgradeUserToSSO: error reading username/password/email params from request";
        LOG_AT(
            1477, Error,
            "ERROR [syscmd:UpgradeUserToSSOHandler]: error reading username/password/email params "
            "from request\n"
        );
        pTx->setCode(CODE_FAILED);
        return;
    }
    const std::string ssousername = accountName(email);
    LOG_AT(
        1443, Info, "syscmd:UpgradeUserToSSOHandler %s %s", p2pusername.c_str(), ssousername.c_str()
    );

    AUTO_FREE char* user_id = nullptr;
    if (GetUserIDByUsername(&user_id, p2pusername.c_str()) != SUCCESS) {
        response = "UpgradeUserToSSO: failed retrieve local user by username:" + p2pusername;
        LOG_AT(
            1470, Error,
            "ERROR [syscmd:UpgradeUserToSSOHandler]:failed retrieve local user by username: %s\n",
            p2pusername.c_str()
        );
        pTx->setCode(CODE_FAILED);
        return;
    }

    const char* new_password = ssopassword.empty() ? nullptr : ssopassword.c_str();
    const int result = UpgradeUserToSSO(
        user_id, p2pusername.c_str(), ssousername.c_str(), new_password, email.c_str()
    );
    if (result == SUCCESS) {
        pTx->setCode(CODE_SUCCEED);
        response = "success";
        LOG_AT(
            1455, Debug, "[syscmd:UpgradeUserToSSOHandler]: UpgradeUserToSSO %s success",
            p2pusername.c_str()
        );
        return;
    }
    response = "UpgradeUserToSSO: error upgrading p2p user:" + p2pusername;
    LOG_AT(
        1461, Error,
        "ERROR [syscmd:UpgradeUserToSSOHandler]:UpgradeUserToSSO %s failed with code=%d\n",
        p2pusername.c_str(), result
    );
    pTx->setCode(CODE_FAILED);
}
