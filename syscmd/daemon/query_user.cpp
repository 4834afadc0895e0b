#include "syscmd/daemon/query_user.h"

#include "common/device/accounts.h"
#include "common/owned_text.h"
#include "liblst/liblst.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/daemon/user_records.h"

namespace {

constexpr ExchangeWords WORDS = {
    .file = __FILE_NAME__,
    .function = "GetUserData",
    .unformatted = {__LINE__, ": asprintf failed\n"},
    .unsent = {__LINE__, ": process_request_bwdclient failed\n"},
    .unanswered = {__LINE__, ": respond is NULL\n"},
    .unread = {__LINE__, ": GetMXLStatus failed\n"},
    .undetailed = {__LINE__, ": GetMXLErrorDetail failed\n"},
};

/** Names of this kind match every query. */
constexpr std::string_view LEAF_USER = "leafuser_";

/** The three results, handed over together or not at all. */
struct UserData {
    char** id;
    char** group;
    char** email;
};

int giveData(const UserData& out, const UserRecord& record)
{
    AUTO_FREE char* id = nullptr;
    AUTO_FREE char* group = nullptr;
    AUTO_FREE char* email = nullptr;
    if (giveCopy(&id, record.id) != SUCCESS || giveCopy(&group, record.group) != SUCCESS ||
        giveCopy(&email, record.email) != SUCCESS) {
        return -1;
    }
    give(out.id, id);
    give(out.group, group);
    give(out.email, email);
    return SUCCESS;
}

bool matches(const UserRecord& record, std::string_view username)
{
    return !record.id.empty() && !record.group.empty() &&
           (record.name == username || record.name.substr(0, LEAF_USER.size()) == LEAF_USER);
}

/** Walks the records of a reply to the one that matches; logs each that does not. */
int findMatch(const UserData& out, const char* username, const char* request, const char* reply)
{
    UserRecords records = {.cursor = reply};
    UserRecord record;
    bool empty = true;
    bool damaged = false;
    while (nextRecord(&records, &record)) {
        empty = false;
        if (matches(record, username)) {
            if (giveData(out, record) == SUCCESS) {
                return SUCCESS;
            }
            LOG_IN(WORDS.function, __LINE__, Error, "ERROR [syscmd:GetUserData]: CutStr failed\n");
            damaged = true;
            continue;
        }
        LOG_IN(
            WORDS.function, __LINE__, Error,
            "ERROR [syscmd:GetUserData]: GetUserData and User Group failed\n"
        );
        LOG_IN(
            WORDS.function, __LINE__, Debug, "DEBUG:%s:%d syscmd:request=%s\n", __FILE_NAME__,
            __LINE__, request
        );
        LOG_IN(
            WORDS.function, __LINE__, Debug, "DEBUG:%s:%d syscmd:respond=%s\n", __FILE_NAME__,
            __LINE__, reply
        );
    }
    if (empty || damaged) {
        return -1;
    }

    // Callers tell "no such user" by the empty id; group and e-mail are the last record's.
    record.id = "";
    if (giveData(out, record) != SUCCESS) {
        LOG_IN(WORDS.function, __LINE__, Error, "ERROR [syscmd:GetUserData]: malloc failed\n");
        return -1;
    }
    return SUCCESS;
}

} // namespace

int getUserIDByName(const char* user, uid_t* uid)
{
    UserNumbers numbers = {};
    if (user == nullptr || uid == nullptr || findUser(user, &numbers) != SUCCESS) {
        return -1;
    }
    *uid = numbers.user;
    return SUCCESS;
}

int GetUserIDByUsername(char** user_id, const char* username)
{
    if (user_id == nullptr || username == nullptr) {
        LOG(Error, "ERROR [syscmd:GetUserIDByUsername]: invalid input arguments\n");
        return -1;
    }
    uid_t uid = 0;
    if (getUserIDByName(username, &uid) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* text = String("%d", static_cast<int>(uid));
    if (text == nullptr) {
        return -1;
    }
    give(user_id, text);
    return SUCCESS;
}

int GetUserData(char** user_id, char** user_group, char** user_email, const char* username)
{
    if (user_id == nullptr || user_group == nullptr || user_email == nullptr ||
        username == nullptr) {
        LOG(Error, "ERROR [syscmd:GetUserData]: invalid input arguments\n");
        return -1;
    }
    LOG(Debug, "syscmd:GetID: username=%s\n", username);

    AUTO_FREE char* request = nullptr;
    if (takeRequest(&request, WORDS, FORMAT_TEMPLATE(GET_USER_DATA_MXL, "", username, "")) !=
        SUCCESS) {
        return -1;
    }
    AUTO_FREE char* reply = nullptr;
    if (sendRequest(&reply, WORDS, request) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* detail = nullptr;
    switch (readOutcome(&detail, WORDS, reply)) {
    case Outcome::Done:
        return findMatch({user_id, user_group, user_email}, username, request, reply);
    case Outcome::Refused:
        LOG(Error, "ERROR [syscmd:GetUserData]: MXL error %s", detail);
        break;
    case Outcome::Failed:
        break;
    }
    return -1;
}
