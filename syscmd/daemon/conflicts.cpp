#include "syscmd/daemon/conflicts.h"

#include "common/account_name.h"
#include "common/log.h"
#include "common/random_name.h"
#include "common/result.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "syscmd/daemon/query_user.h"
#include "syscmd/daemon/update_user.h"

#include <cstring>

namespace {

constexpr int SUFFIX_LENGTH = 4;
constexpr int KEPT_LENGTH = static_cast<int>(MAX_USERNAME_LENGTH) - SUFFIX_LENGTH;

/** Tells the device's owner, by an event of the management daemon. Names go into the shell's
 * command and into its XML as they are; the tool's outcome is not looked at. */
void raiseEvent(const char* username, const char* new_username, const char* clouduser)
{
    executeShellFormat(
        "/usr/bin/event_push shell boxwelld "
        "\"<xs:add-s resource-type=\\\"Log\\\" resource-id=\\\"Log\\\">"
        "<Log severity=\\\"warning\\\" "
        "message-tag=\\\"LOGMSG_SKYHOLD_RENAME_LOCAL_USER_IF_EXIST\\\" category=\\\"system\\\">"
        "<args user=\\\"%s\\\" newuser=\\\"%s\\\" clouduser=\\\"%s\\\"/></Log></xs:add-s>\" 0 0",
        username, new_username, clouduser
    );
}

/** The name that gives way: what is kept of the old one, and a random suffix; null when memory runs
 * out. */
char* derivedName(const char* username)
{
    AUTO_FREE char* suffix = nullptr;
    if (generateHashString(&suffix, SUFFIX_LENGTH) != SUCCESS) {
        return nullptr;
    }
    return String("%.*s%s", KEPT_LENGTH, username, suffix);
}

bool same(const char* one, const char* other)
{
    return strcmp(one, other) == 0;
}

} // namespace

int renameLocalUserIfExists(const char* username, const char* clouduser)
{
    if (username == nullptr) {
        LOG_INVALID_INPUT(__LINE__);
        return -1;
    }
    AUTO_FREE char* id = nullptr;
    AUTO_FREE char* group = nullptr;
    AUTO_FREE char* email = nullptr;
    if (GetUserData(&id, &group, &email, username) != SUCCESS || *id == '\0') {
        return SUCCESS; // nobody of that name, as far as can be told
    }

    AUTO_FREE char* new_username = derivedName(username);
    if (new_username == nullptr) {
        LOG(Debug,
            "[syscmd:%s]: failed generating hash for renaming conflicting "
            "account %s\n",
            __func__, username);
        return -2;
    }
    const int code = UpdateUser({.user_id = id, .username = new_username, .email = email});
    if (code != SUCCESS) {
        LOG(Error, "ERROR [syscmd:%s]: UpdateUser %s failed with code=%d\n", __func__, username,
            code);
    }
    raiseEvent(username, new_username, clouduser); // after a refusal too
    return code == SUCCESS ? SUCCESS : -3;
}

int resolveLocalUserConflicts(
    const char* username, const char* new_username, const char* p2pusername
)
{
    if (username == nullptr || new_username == nullptr) {
        LOG_INVALID_INPUT(__LINE__);
        return -1;
    }
    const bool renamed = !same(username, new_username);
    if (p2pusername != nullptr && same(p2pusername, new_username)) {
        return SUCCESS; // an account of either name is the user's own
    }

    int result = SUCCESS;
    if (renamed) {
        result = renameLocalUserIfExists(new_username, new_username);
    }
    if (p2pusername != nullptr) {
        result = renameLocalUserIfExists(p2pusername, new_username);
    }
    return result;
}
