#include "common/io.h"
#include "liblst/owned.h"
#include "syscmd/handler.h"
#include "syscmd/local_conflicts.h"
#include "syscmd/owner_query.h"
#include "syscmd/parameters.h"
#include "syscmd/user_query.h"
#include "syscmd/user_update.h"

namespace {

/** What the command asks for. */
struct Request {
    std::string username;
    std::string password_hash;
    std::string email;
    std::string p2pusername;
};

/** Rewrites the owner file under the owner's new name, keeping the peer-to-peer owner. */
int renameOwner(const std::string& new_username)
{
    AUTO_FREE char* p2powner = GetP2POwner();
    return createOwnerFile(true, new_username, p2powner, OWNER_FILE);
}

/** The text of the failure, logged; null when the account was updated. */
const char* update(const Request& request)
{
    static constexpr const char* FUNCTION = "UpdateUserHandler";
    const char* username = request.username.c_str();
    const std::string new_username = accountName(request.email);

    if (resolveLocalUserConflicts(username, new_username.c_str(), request.p2pusername.c_str()) !=
        SUCCESS) {
        LOG_IN(
            FUNCTION, __LINE__, Error,
            "[syscmd:UpdateUserHandler]: failed resolving username conflict with local user for "
            "updated account %s\n",
            request.email.c_str()
        );
        return "UpdateUser failed";
    }

    AUTO_FREE char* user_id = nullptr;
    if (GetUserIDByUsername(&user_id, username) != SUCCESS) {
        LOG_IN(
            FUNCTION, __LINE__, Error,
            "ERROR [syscmd:UpdateUserHandler]: Failed getting user %s id\n", username
        );
        return "UpdateUser failed: unable to get local user id";
    }

    int is_owner = 0;
    const char* group = getGroupByUsername(username, &is_owner);
    const int code = UpdateUser(
        user_id, new_username.c_str(), request.password_hash.c_str(), group, request.email.c_str(),
        request.p2pusername.c_str()
    );
    if (code != SUCCESS) {
        LOG_IN(
            FUNCTION, __LINE__, Error,
            "ERROR [syscmd:UpdateUserHandler]: UpdateUser %s failed with code=%d\n", username, code
        );
        return "UpdateUser failed";
    }

    if (is_owner == 1 && renameOwner(new_username) != SUCCESS) {
        LOG_IN(
            FUNCTION, __LINE__, Error,
            "ERROR [syscmd:UpdateUserHandler] failed updating skyhold owner file\n"
        );
        return "UpdateUser failed";
    }
    return nullptr;
}

} // namespace

void UpdateUserHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG(Error, "[syscmd:UpdateUserHandler] invalid input arguments");
        return;
    }
    pTx->setCode(CODE_SUCCEED);
    response = "success";

    Request request;
    if (!readParameters(
            *pTx, request.username, request.password_hash, request.email, request.p2pusername
        )) {
        response = "Update User: error reading username/password/email params from request";
        LOG(Error,
            "ERROR [syscmd:UpdateUserHandler]: Update User: error reading username/password/email "
            "params from request\n");
        pTx->setCode(CODE_FAILED);
        return;
    }
    request.username = accountName(request.username);
    LOG(Debug, "syscmd:UpdateUserHandler %s\n", request.username.c_str());

    if (const char* failure = update(request)) {
        response = failure;
        pTx->setCode(CODE_FAILED);
    }
}
