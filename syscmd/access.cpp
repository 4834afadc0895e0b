#include "syscmd/access.h"

#include "common/account_name.h"
#include "common/base64.h"
#include "common/log.h"
#include "common/result.h"
#include "liblst/owned.h"
#include "syscmd/handler.h"
#include "syscmd/operations.h"

#include <algorithm>
#include <cstring>

namespace {

/** Fills the flags for a login; a null one (memory ran out) is nobody's, not an empty name. */
void identify(const char* login, int& is_owner, int& is_sh)
{
    is_owner = isOwner(login);
    if constexpr (STRICT) { // nobody's, where the daemon must not be asked
        login = login != nullptr && mayHold(Parameter::User, login) ? login : nullptr;
    }
    is_sh = is_owner != 0 ? 1 : isUserInGroup(login, SKYHOLD_GROUP);
}

} // namespace

void cutLogin(char* credentials)
{
    if (char* colon = strchr(credentials, ':')) {
        const auto length = static_cast<std::size_t>(colon - credentials);
        credentials[std::min(length, MAX_USERNAME_LENGTH)] = '\0';
    }
}

int AuthenticateUser(const std::string& operation, ITransaction* pTx, int& is_owner, int& is_sh)
{
    if (pTx == nullptr) {
        LOG_AT(1251, Error, "ERROR [syscmd:%s]: invalid arguments specified", __func__);
        return -2;
    }
    const Operation* known = findOperation(operation);
    if (known == nullptr || known->requester == Requester::Anyone) {
        return SUCCESS;
    }

    std::string credentials;
    pTx->getAuthInfo(credentials); // none are an empty text
    AUTO_FREE char* decoded = ptDecodeBase64(credentials.c_str());
    if (decoded != nullptr) {
        cutLogin(decoded);
    }
    identify(decoded, is_owner, is_sh);

    const char* login = decoded == nullptr ? "" : decoded;
    LOG_AT(
        1278, Debug,
        "INFO [syscmd:execute]: ACCESS REQUESTED for SYS: login=%s is_owner=%d is_sh=%d\n",
        LOGGED(login), is_owner, is_sh
    );
    if (is_owner != 0 || is_sh != 0) {
        return SUCCESS;
    }

    LOG_AT(
        1282, Error,
        "ERROR [syscmd:%s]: ACCESS DENIED for SYS: operation=%s login=%s is_owner=%d "
        "is_sh=%d\n",
        __func__, operation.c_str(), LOGGED(login), is_owner, is_sh
    );
    return -1;
}
