#include "common/device/accounts.h"
#include "common/device/owner_file.h"
#include "common/log.h"
#include "common/result.h"
#include "liblst/owned.h"
#include "syscmd/commands/account_group.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/conflicts.h"
#include "syscmd/daemon/update_user.h"
#include "syscmd/handler.h"

namespace {

constexpr Speaker HANDLER = SPEAKER("UpdateUserHandler");

constexpr char FAILED[] = "UpdateUser failed";

/** An account's name and the one that it is to have, with what else decides who is in its way. */
struct Rename {
    const char* from;
    const char* to;
    const char* email;
    const char* p2pusername;
};

/** Moves other accounts out of the way, then finds the account's id; the response to a failure,
 * which is logged, or null. */
const char* prepare(char** user_id, const Rename& rename)
{
    if (resolveLocalUserConflicts(rename.from, rename.to, rename.p2pusername) != SUCCESS) {
        LOG_AS(
            HANDLER, Error,
            "[syscmd:%s]: failed resolving username conflict with local user for "
            "updated account %s\n",
            HANDLER.function, rename.email
        );
        return FAILED;
    }
    if (GetUserIDByUsername(user_id, rename.from) != SUCCESS) {
        LOG_AS(
            HANDLER, Error, "ERROR [syscmd:%s]: Failed getting user %s id\n", HANDLER.function,
            rename.from
        );
        return "UpdateUser failed: unable to get local user id";
    }
    return nullptr;
}

/** Rewrites the owner file under the owner's new name, keeping the peer-to-peer owner; a failure is
 * logged. */
bool renameOwner(const char* new_username)
{
    AUTO_FREE char* p2powner = GetP2POwner();
    const bool written = createOwnerFile(true, new_username, p2powner, OWNER_FILE) == SUCCESS;
    if (!written) {
        LOG_AS(
            HANDLER, Error, "ERROR [syscmd:%s] failed updating skyhold owner file\n",
            HANDLER.function
        );
    }
    return written;
}

} // namespace

void UpdateUserHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_NO_TRANSACTION(__LINE__);
        return;
    }
    succeed(*pTx, response); // stands unless something fails
    std::string parameters[4];
    if (!readParameters(*pTx, parameters)) {
        LOG(Error, "ERROR [syscmd:%s]: Update User: %s\n", __func__, UNREAD.data());
        return fail(*pTx, response, "Update User: ", UNREAD);
    }
    auto& [username, password_hash, email, p2pusername] = parameters;
    const std::string old_name = accountName(username);
    const std::string new_name = accountName(email);
    const Rename rename = {old_name.c_str(), new_name.c_str(), email.c_str(), p2pusername.c_str()};
    LOG(Debug, "syscmd:UpdateUserHandler %s\n", rename.from);

    AUTO_FREE char* user_id = nullptr;
    if (const char* failure = prepare(&user_id, rename)) {
        return fail(*pTx, response, failure);
    }
    int is_owner = 0;
    AUTO_FREE char* owner = nullptr;
    const char* group = getGroupByUsername(rename.from, &is_owner, &owner);
    const int code = UpdateUser(
        {user_id, rename.to, password_hash.c_str(), group, rename.email, rename.p2pusername, owner}
    );
    if (code != SUCCESS) {
        LOG(Error, "ERROR [syscmd:%s]: UpdateUser %s failed with code=%d\n", __func__, rename.from,
            code);
        return fail(*pTx, response, FAILED);
    }
    if (is_owner == 1 && !renameOwner(rename.to)) {
        fail(*pTx, response, FAILED);
    }
}
