#include "syscmd/daemon/query_user.h"

#include "common/mxl_templates.h"
#include "common/owned_text.h"
#include "liblst/liblst.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/daemon/user_records.h"

namespace {

constexpr Exchange QUERY = {
    .speaker = SPEAKER("GetUserData"),
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

/** Shows a text of the exchange in a statement that names its own file and line. */
void show(int line, const char* what, const char* text)
{
    LOG_AS_AT(
        QUERY.speaker, line, Debug, "DEBUG:%s:%d syscmd:%s=%s\n", QUERY.speaker.file, line, what,
        text
    );
}

/** Walks the records of a reply to the one that matches; logs each that does not. */
int findMatch(const UserData& out, const char* username, const Answer& answer)
{
    UserRecords records = {.cursor = answer.reply};
    UserRecord record;
    bool empty = true;
    bool damaged = false;
    while (nextRecord(&records, &record)) {
        empty = false;
        if (matches(record, username)) {
            if (giveData(out, record) == SUCCESS) {
                return SUCCESS;
            }
            LOG_AS(
                QUERY.speaker, Error, "ERROR [syscmd:%s]: CutStr failed\n", QUERY.speaker.function
            );
            damaged = true;
            continue;
        }
        LOG_AS(
            QUERY.speaker, Error, "ERROR [syscmd:%s]: GetUserData and User Group failed\n",
            QUERY.speaker.function
        );
        show(__LINE__, "request", answer.request);
        show(__LINE__, "respond", answer.reply);
    }
    if (empty || damaged) {
        return -1;
    }

    // Callers tell "no such user" by the empty id; group and e-mail are the last record's.
    record.id = "";
    if (giveData(out, record) != SUCCESS) {
        LOG_AS(QUERY.speaker, Error, "ERROR [syscmd:%s]: malloc failed\n", QUERY.speaker.function);
        return -1;
    }
    return SUCCESS;
}

} // namespace

int GetUserData(char** user_id, char** user_group, char** user_email, const char* username)
{
    if (user_id == nullptr || user_group == nullptr || user_email == nullptr ||
        username == nullptr) {
        LOG_INVALID_INPUT(__LINE__);
        return -1;
    }
    LOG(Debug, "syscmd:GetID: username=%s\n", username);

    AUTO_ANSWER Answer answer = {};
    switch (ask(answer, QUERY, String(GET_USER_DATA_MXL_TEXT, "", username, ""))) {
    case Outcome::Done:
        return findMatch({user_id, user_group, user_email}, username, answer);
    case Outcome::Failed:
        return -1;
    case Outcome::Refused:
        break;
    }
    LOG(Error, "ERROR [syscmd:%s]: MXL error %s", __func__, answer.detail);
    return -1;
}
