#include "syscmd/commands/upgradeusertosso.h"

#include "common/io.h"
#include "liblst/owned.h"
#include "syscmd/commands/account_group.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/query_user.h"
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

namespace {

constexpr CommandWords HANDLER = {
    .file = __FILE_NAME__,
    .function = "UpgradeUserToSSOHandler",
    .unread = "",
    .answer = "UpgradeUserToSSO: error reading username/password/email params from request",
    .null_line = 1434,
    .unread_line = 1477,
    .parameters = 3,
};

void upgrade(ITransaction& tx, std::string& response, const char* const* parameters)
{
    const char* p2pusername = parameters[0];
    const char* email = parameters[1];
    const char* ssopassword = parameters[2];
    AccountName name;
    const char* ssousername = accountName(name, email);
    LOG_IN(
        HANDLER.function, 1443, Info, "syscmd:UpgradeUserToSSOHandler %s %s", p2pusername,
        ssousername
    );

    AUTO_FREE char* user_id = nullptr;
    if (GetUserIDByUsername(&user_id, p2pusername) != SUCCESS) {
        setResponse(
            response, "UpgradeUserToSSO: failed retrieve local user by username:", p2pusername
        );
        LOG_IN(
            HANDLER.function, 1470, Error,
            "ERROR [syscmd:UpgradeUserToSSOHandler]:failed retrieve local user by username: %s\n",
            p2pusername
        );
        tx.setCode(CODE_FAILED);
        return;
    }

    const char* new_password = *ssopassword == '\0' ? nullptr : ssopassword;
    const int result = UpgradeUserToSSO(user_id, p2pusername, ssousername, new_password, email);
    if (result == SUCCESS) {
        tx.setCode(CODE_SUCCEED);
        setResponse(response, "success");
        LOG_IN(
            HANDLER.function, 1455, Debug,
            "[syscmd:UpgradeUserToSSOHandler]: UpgradeUserToSSO %s success", p2pusername
        );
        return;
    }
    setResponse(response, "UpgradeUserToSSO: error upgrading p2p user:", p2pusername);
    LOG_IN(
        HANDLER.function, 1461, Error,
        "ERROR [syscmd:UpgradeUserToSSOHandler]:UpgradeUserToSSO %s failed with code=%d\n",
        p2pusername, result
    );
    tx.setCode(CODE_FAILED);
}

} // namespace

void UpgradeUserToSSOHandler(ITransaction* pTx, std::string& response)
{
    runCommand(pTx, response, HANDLER, upgrade);
}
