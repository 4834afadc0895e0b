#include "syscmd/daemon/delete_user.h"

#include "common/device/accounts.h"
#include "common/isowner.h"
#include "common/mxl_templates.h"
#include "common/result.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/daemon/query_user.h"
#include "syscmd/daemon/remote_user.h"

#include <cstring>
#include <utility>

namespace {

constexpr Exchange DELETION = {
    .speaker = SPEAKER("DelUser"),
    .unformatted = {__LINE__, ": asprintf failed\n"},
    .unsent = {__LINE__, ": process_request_bwdclient failed\n"},
    .unanswered = {__LINE__, ": respond is not initialized\n"},
    .unread = {__LINE__, ": GetMXLStatus failed\n"},
    .undetailed = {__LINE__, ": GetMXLErrorDetail failed\n"},
};

/** The answer for an account that nobody knows; `group` is what the daemon's records had. */
int unknownAccount(const char* username, const char* p2pusername, const char* group)
{
    if (*group != '\0' || strchr(username, '@') == nullptr) {
        return SUCCESS;
    }
    DelNetwork(p2pusername);
    return -1;
}

/** Deletes the account of that id, and then its remote-access user. */
int deleteAccount(const char* id, const char* p2pusername)
{
    AUTO_ANSWER Answer answer = {};
    switch (ask(answer, DELETION, String(DELETE_USER_MXL_TEXT, id))) {
    case Outcome::Done:
        DelNetwork(p2pusername); // the account is gone, whatever becomes of this
        return SUCCESS;
    case Outcome::Failed:
        return -1;
    case Outcome::Refused:
        break;
    }
    LOG_AS(
        DELETION.speaker, Error, "ERROR [syscmd:%s]: DelUser failed\n", DELETION.speaker.function
    );
    LOG_AS(
        DELETION.speaker, Error, "ERROR [syscmd:%s]: %s", DELETION.speaker.function, answer.detail
    );
    return -1;
}

} // namespace

int DelUser(const char* username, const char* p2pusername, int force)
{
    if (username == nullptr || p2pusername == nullptr) {
        LOG_INVALID_INPUT(__LINE__);
        return -1;
    }
    AUTO_FREE char* id = nullptr;
    AUTO_FREE char* group = nullptr;
    AUTO_FREE char* email = nullptr;
    if (GetUserData(&id, &group, &email, username) == -1) {
        LOG(Error, "ERROR [syscmd:%s]: GetUserData failed\n", __func__);
        return -1;
    }
    if (*id == '\0') {
        AUTO_FREE char* system_id = nullptr;
        if (GetUserIDByUsername(&system_id, username) != SUCCESS) {
            return unknownAccount(username, p2pusername, group);
        }
        std::swap(id, system_id);
    }
    if (force == CLOUD_ACCOUNTS_ONLY && strcmp(group, SKYHOLD_GROUP) != 0) {
        return SUCCESS;
    }
    return deleteAccount(id, p2pusername);
}
