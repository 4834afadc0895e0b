#include "syscmd/daemon/update_user.h"

#include "common/common.h"
#include "liblst/owned.h"
#include "syscmd/commands/account_group.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/daemon/password_pair.h"

#include <cstring>

namespace {

constexpr ExchangeWords WORDS = {
    .file = __FILE_NAME__,
    .function = "UpdateUser",
    .unformatted = {__LINE__, ": asprintf failed\n"},
    .unsent = {__LINE__, ": process_request_bwdclient failed\n"},
    .unanswered = {__LINE__, ": respond is not initialized\n"},
    .unread = {__LINE__, ": GetMXLStatus failed\n"},
    .undetailed = {__LINE__, ": GetMXLErrorDetail failed\n"},
};

/** The name under which the daemon is asked: the cloud owner's, cut; null when it is not known. */
char* authority()
{
    char* owner = GetSSOOwner();
    if (owner != nullptr && strlen(owner) > MAX_USERNAME_LENGTH) {
        owner[MAX_USERNAME_LENGTH] = '\0';
    }
    return owner;
}

/** What printf makes of a null text, spelled out because a compiler need not. */
const char* printable(const char* text)
{
    return text == nullptr ? "(null)" : text;
}

/** An account and what it is to become; the texts are the caller's. */
struct Change {
    const char* owner;
    const char* id;
    const char* username;
    const char* group;
    const char* email;
    const char* p2pusername;
};

/** Formats a change with new hashes. */
int formatWithHashes(char** request, const Change& to, const PasswordPair& hashes)
{
    const char* group = printable(to.group);
    const char* p2pusername = printable(to.p2pusername);
    if (to.p2pusername == nullptr) {
        LOG_IN(
            WORDS.function, __LINE__, Info,
            "[syscmd:UpdateUser] username=%s, smbhash=%s, syshash=%s, group=%s email=%s "
            "p2pusername=%s\n",
            to.username, hashes.smb, hashes.system, group, to.email, p2pusername
        );
        return takeRequest(
            request, WORDS,
            FORMAT_TEMPLATE(
                UPDATE_ACCOUNT_MXL, to.owner, to.id, to.id, to.id, to.username, hashes.smb,
                hashes.system, group, to.email, p2pusername
            )
        );
    }
    LOG_IN(
        WORDS.function, __LINE__, Info,
        "[syscmd:UpdateUser] username=%s, smbhash=%s, syshash=%s, group=%s, email=%s "
        "p2pusername=%s\n",
        to.username, hashes.smb, hashes.system, group, to.email, p2pusername
    );
    return takeRequest(
        request, WORDS,
        FORMAT_TEMPLATE(
            RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME, to.owner, to.id, to.id, to.id, to.username,
            hashes.smb, hashes.system, group, to.email, p2pusername
        )
    );
}

/** Formats a change that keeps the password. */
int formatWithoutHashes(char** request, const Change& to)
{
    if (to.p2pusername == nullptr) {
        LOG_IN(WORDS.function, __LINE__, Info, "[syscmd:UpdateUser] username=%s\n", to.username);
        return takeRequest(
            request, WORDS,
            FORMAT_TEMPLATE(
                RENAME_ACCOUNT_NO_PASSWORD_MXL, to.owner, to.id, to.id, to.id, to.username, to.email
            )
        );
    }
    const char* group = printable(to.group);
    LOG_IN(
        WORDS.function, __LINE__, Info,
        "[syscmd:UpdateUser] username=%s, group=%s, email=%s p2pusername=%s\n", to.username, group,
        to.email, to.p2pusername
    );
    return takeRequest(
        request, WORDS,
        FORMAT_TEMPLATE(
            RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD, to.owner, to.id, to.id, to.id,
            to.username, group, to.email, to.p2pusername
        )
    );
}

/** Decodes the hashes, if any, and formats the request; says what is wrong with a pair. */
int formatUpdate(char** request, const Change& to, const char* password_hash)
{
    if (password_hash == nullptr) {
        return formatWithoutHashes(request, to);
    }

    AUTO_FREE char* decoded = nullptr;
    PasswordPair hashes = {};
    if (decodePasswordPair(&decoded, &hashes, password_hash) != SUCCESS) {
        LOG_IN(
            WORDS.function, __LINE__, Error,
            "ERROR [syscmd:UpdateUser] invalid hash value %s[%s]\n",
            decoded == nullptr ? "" : decoded, password_hash
        );
        return -1;
    }
    return formatWithHashes(request, to, hashes);
}

/** Logs the daemon's refusal. */
void reportRefusal(const char* detail)
{
    // A name clash reads like any other refusal; support staff tell them apart by the line.
    if (strstr(detail, "already exists") != nullptr) {
        LOG_IN(WORDS.function, __LINE__, Error, "ERROR [syscmd:UpdateUser]: Update failed\n");
    } else {
        LOG_IN(WORDS.function, __LINE__, Error, "ERROR [syscmd:UpdateUser]: Update failed\n");
    }
    LOG_IN(WORDS.function, __LINE__, Error, "ERROR [syscmd:UpdateUser]: MXL error %s", detail);
}

} // namespace

int UpdateUser(
    const char* user_id,
    const char* username,
    const char* password_hash,
    const char* group,
    const char* email,
    const char* p2pusername
)
{
    if (user_id == nullptr || email == nullptr || username == nullptr) {
        LOG(Error, "ERROR [syscmd:UpdateUser] invalid input arguments\n");
        return -1;
    }
    AUTO_FREE char* owner = authority();
    if (owner == nullptr) {
        LOG(Error, "ERROR [syscmd:UpdateUser]: owner file unreadable\n");
        return -1;
    }
    AUTO_FREE char* request = nullptr;
    const Change to = {owner, user_id, username, group, email, p2pusername};
    if (formatUpdate(&request, to, password_hash) != SUCCESS) {
        return -1;
    }

    LOG(Debug, "syscmd:request=%s\n", request);
    AUTO_FREE char* reply = nullptr;
    if (sendRequest(&reply, WORDS, request) != SUCCESS) {
        return -1;
    }
    LOG(Debug, "syscmd:respond=%s\n", reply);

    AUTO_FREE char* detail = nullptr;
    switch (readOutcome(&detail, WORDS, reply)) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Refused:
        reportRefusal(detail);
        break;
    case Outcome::Failed:
        break;
    }
    return -1;
}
