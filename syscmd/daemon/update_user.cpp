#include "syscmd/daemon/update_user.h"

#include "common/account_name.h"
#include "common/device/owner_file.h"
#include "common/mxl_templates.h"
#include "common/result.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/daemon/password_pair.h"
#include "syscmd/daemon/printable.h"

#include <cstring>

namespace {

constexpr Exchange UPDATE = {
    .speaker = SPEAKER("UpdateUser"),
    .unformatted = {__LINE__, ": asprintf failed\n"},
    .unsent = {__LINE__, ": process_request_bwdclient failed\n"},
    .unanswered = {__LINE__, ": respond is not initialized\n"},
    .unread = {__LINE__, ": GetMXLStatus failed\n"},
    .undetailed = {__LINE__, ": GetMXLErrorDetail failed\n"},
    .shown_request = __LINE__,
    .shown_reply = __LINE__,
};

/** The request that sets new hashes, logged; null when memory runs out. */
char* requestWithHashes(const char* owner, const UserUpdate& to, const PasswordPair& hashes)
{
    const char* group = printable(to.group);
    const char* p2pusername = printable(to.p2pusername);
    if (to.p2pusername == nullptr) {
        LOG_AS(
            UPDATE.speaker, Info,
            "[syscmd:%s] username=%s, smbhash=%s, syshash=%s, group=%s email=%s "
            "p2pusername=%s\n",
            UPDATE.speaker.function, to.username, hashes.smb, hashes.system, group, to.email,
            p2pusername
        );
        return String(
            UPDATE_ACCOUNT_MXL_TEXT, owner, to.user_id, to.user_id, to.user_id, to.username,
            hashes.smb, hashes.system, group, to.email, p2pusername
        );
    }
    LOG_AS(
        UPDATE.speaker, Info,
        "[syscmd:%s] username=%s, smbhash=%s, syshash=%s, group=%s, email=%s "
        "p2pusername=%s\n",
        UPDATE.speaker.function, to.username, hashes.smb, hashes.system, group, to.email,
        p2pusername
    );
    return String(
        RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_TEXT, owner, to.user_id, to.user_id, to.user_id,
        to.username, hashes.smb, hashes.system, group, to.email, p2pusername
    );
}

/** The request that keeps the password, logged; null when memory runs out. */
char* requestWithoutHashes(const char* owner, const UserUpdate& to)
{
    if (to.p2pusername == nullptr) {
        LOG_AS(
            UPDATE.speaker, Info, "[syscmd:%s] username=%s\n", UPDATE.speaker.function, to.username
        );
        return String(
            RENAME_ACCOUNT_NO_PASSWORD_MXL_TEXT, owner, to.user_id, to.user_id, to.user_id,
            to.username, to.email
        );
    }
    const char* group = printable(to.group);
    LOG_AS(
        UPDATE.speaker, Info, "[syscmd:%s] username=%s, group=%s, email=%s p2pusername=%s\n",
        UPDATE.speaker.function, to.username, group, to.email, to.p2pusername
    );
    return String(
        RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD_TEXT, owner, to.user_id, to.user_id,
        to.user_id, to.username, group, to.email, to.p2pusername
    );
}

/** Logs the daemon's refusal; returns the failure. */
int reportRefusal(const char* detail)
{
    // A name clash reads like any other refusal; support staff tell them apart by the line.
    if (strstr(detail, "already exists") != nullptr) {
        LOG_AS(
            UPDATE.speaker, Error, "ERROR [syscmd:%s]: Update failed\n", UPDATE.speaker.function
        );
    } else {
        LOG_AS(
            UPDATE.speaker, Error, "ERROR [syscmd:%s]: Update failed\n", UPDATE.speaker.function
        );
    }
    LOG_AS(
        UPDATE.speaker, Error, "ERROR [syscmd:%s]: MXL error %s", UPDATE.speaker.function, detail
    );
    return -1;
}

} // namespace

int UpdateUser(const UserUpdate& to)
{
    if (to.user_id == nullptr || to.email == nullptr || to.username == nullptr) {
        LOG(Error, "ERROR [syscmd:%s] invalid input arguments\n", __func__);
        return -1;
    }
    AUTO_FREE char* read = to.owner == nullptr ? GetSSOOwner() : nullptr;
    char* owner = to.owner == nullptr ? read : to.owner;
    if (owner == nullptr) {
        LOG(Error, "ERROR [syscmd:%s]: owner file unreadable\n", __func__);
        return -1;
    }
    owner[strnlen(owner, MAX_USERNAME_LENGTH)] = '\0';
    AUTO_FREE char* decoded = nullptr;
    PasswordPair hashes = {};
    if (to.password_hash != nullptr &&
        decodePasswordPair(&decoded, &hashes, to.password_hash) != SUCCESS) {
        LOG(Error, "ERROR [syscmd:%s] invalid hash value %s[%s]\n", __func__,
            decoded == nullptr ? "" : decoded, to.password_hash);
        return -1;
    }

    AUTO_ANSWER Answer answer = {};
    char* request = to.password_hash != nullptr ? requestWithHashes(owner, to, hashes)
                                                : requestWithoutHashes(owner, to);
    switch (ask(answer, UPDATE, request)) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Failed:
        return -1;
    case Outcome::Refused:
        break;
    }
    return reportRefusal(answer.detail);
}
