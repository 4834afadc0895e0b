#include "common/io.h"
#include "liblst/owned.h"
#include "syscmd/commands/account_group.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/conflicts.h"
#include "syscmd/daemon/query_user.h"
#include "syscmd/daemon/update_user.h"
#include "syscmd/handler.h"

namespace {

constexpr CommandWords HANDLER = {
    .file = __FILE_NAME__,
    .function = "UpdateUserHandler",
    .unread = "Update User: ",
    .answer = "Update User: error reading username/password/email params from request",
    .null_line = __LINE__,
    .unread_line = __LINE__,
    .parameters = 4,
};

/** Rewrites the owner file under the owner's new name, keeping the peer-to-peer owner. */
int renameOwner(const char* new_username)
{
    AUTO_FREE char* p2powner = GetP2POwner();
    return createOwnerFile(true, new_username, p2powner, OWNER_FILE);
}

/** The text of the failure, logged; null when the account was updated. */
const char*
update(const char* username, const char* password_hash, const char* email, const char* p2pusername)
{
    AccountName new_name;
    const char* new_username = accountName(new_name, email);
    if (resolveLocalUserConflicts(username, new_username, p2pusername) != SUCCESS) {
        LOG_IN(
            HANDLER.function, __LINE__, Error,
            "[syscmd:UpdateUserHandler]: failed resolving username conflict with local user for "
            "updated account %s\n",
            email
        );
        return "UpdateUser failed";
    }

    AUTO_FREE char* user_id = nullptr;
    if (GetUserIDByUsername(&user_id, username) != SUCCESS) {
        LOG_IN(
            HANDLER.function, __LINE__, Error,
            "ERROR [syscmd:UpdateUserHandler]: Failed getting user %s id\n", username
        );
        return "UpdateUser failed: unable to get local user id";
    }

    int is_owner = 0;
    const char* group = getGroupByUsername(username, &is_owner);
    const int code = UpdateUser(user_id, new_username, password_hash, group, email, p2pusername);
    if (code != SUCCESS) {
        LOG_IN(
            HANDLER.function, __LINE__, Error,
            "ERROR [syscmd:UpdateUserHandler]: UpdateUser %s failed with code=%d\n", username, code
        );
        return "UpdateUser failed";
    }

    if (is_owner == 1 && renameOwner(new_username) != SUCCESS) {
        LOG_IN(
            HANDLER.function, __LINE__, Error,
            "ERROR [syscmd:UpdateUserHandler] failed updating skyhold owner file\n"
        );
        return "UpdateUser failed";
    }
    return nullptr;
}

void change(ITransaction& tx, std::string& response, const char* const* parameters)
{
    AccountName name;
    const char* username = accountName(name, parameters[0]);
    LOG_IN(HANDLER.function, __LINE__, Debug, "syscmd:UpdateUserHandler %s\n", username);

    if (const char* failure = update(username, parameters[1], parameters[2], parameters[3])) {
        setResponse(response, failure);
        tx.setCode(CODE_FAILED);
    }
}

} // namespace

void UpdateUserHandler(ITransaction* pTx, std::string& response)
{
    if (pTx != nullptr) {
        pTx->setCode(CODE_SUCCEED);
        setResponse(response, "success");
    }
    runCommand(pTx, response, HANDLER, change);
}
