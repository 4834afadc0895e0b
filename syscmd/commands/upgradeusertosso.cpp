#include "syscmd/commands/upgradeusertosso.h"

#include "common/device/accounts.h"
#include "common/device/owner_file.h"
#include "common/device/upgrade_flag.h"
#include "common/error_text.h"
#include "common/log.h"
#include "common/result.h"
#include "liblst/owned.h"
#include "syscmd/commands/account_group.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/update_user.h"
#include "syscmd/handler.h"

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
        LOG_AT(975, Error, "ERROR [syscmd:%s] invalid input arguments\n", __func__);
        return UPGRADE_INVALID_ARGUMENT;
    }
    int is_owner = 0;
    AUTO_FREE char* owner = nullptr;
    const char* group = getGroupByUsername(p2pusername, &is_owner, &owner);

    int result = SUCCESS;
    if (UpdateUser({user_id, ssousername, ssopassword, group, email, p2pusername, owner}) !=
        SUCCESS) {
        LOG_AT(982, Error, "ERROR [syscmd:%s] failed updating user account\n", __func__);
        result = UPGRADE_UPDATE_FAILED;
    }
    if (is_owner == 1 && createOwnerFile(true, ssousername, p2pusername, OWNER_FILE) != SUCCESS) {
        LOG_AT(989, Error, "ERROR [syscmd:%s] failed updating skyhold owner file\n", __func__);
        result = UPGRADE_OWNER_FILE_FAILED;
    }
    if (setSSOUpgradeFlag() != SUCCESS) {
        ErrorText text = {};
        LOG_AT(
            998, Error, "[syscmd::%s] failed setting SSOUpgradeFlag [%s]\n", __func__,
            errorText(text, errno)
        );
    }
    return result;
}

void UpgradeUserToSSOHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_NO_TRANSACTION(1434);
        return;
    }
    std::string parameters[3];
    if (!readParameters(*pTx, parameters)) {
        LOG_AT(1477, Error, "ERROR [syscmd:%s]: %s\n", __func__, UNREAD.data());
        return fail(*pTx, response, "UpgradeUserToSSO: ", UNREAD);
    }
    auto& [p2pusername, email, ssopassword] = parameters;
    const std::string ssousername = accountName(email);
    const char* name = p2pusername.c_str();
    LOG_AT(1443, Info, "syscmd:UpgradeUserToSSOHandler %s %s", name, ssousername.c_str());

    AUTO_FREE char* user_id = nullptr;
    if (GetUserIDByUsername(&user_id, name) != SUCCESS) {
        LOG_AT(
            1470, Error, "ERROR [syscmd:%s]:failed retrieve local user by username: %s\n", __func__,
            name
        );
        return fail(
            *pTx, response, "UpgradeUserToSSO: failed retrieve local user by username:", p2pusername
        );
    }
    const char* password = ssopassword.empty() ? nullptr : ssopassword.c_str();
    const int result =
        UpgradeUserToSSO(user_id, name, ssousername.c_str(), password, email.c_str());
    if (result != SUCCESS) {
        LOG_AT(
            1461, Error, "ERROR [syscmd:%s]:UpgradeUserToSSO %s failed with code=%d\n", __func__,
            name, result
        );
        return fail(*pTx, response, "UpgradeUserToSSO: error upgrading p2p user:", p2pusername);
    }
    succeed(*pTx, response);
    LOG_AT(1455, Debug, "[syscmd:%s]: UpgradeUserToSSO %s success", __func__, name);
}
