#include "syscmd/daemon/delete_user.h"

#include "common/common.h"
#include "common/isowner.h"
#include "liblst/owned.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/daemon/query_user.h"

#include <cstring>
#include <utility>

namespace {

constexpr ExchangeWords NETWORK_WORDS = {
    .file = __FILE_NAME__,
    .function = "DelNetwork",
    .unformatted = {__LINE__, ": asprintf failed\n"},
    .unsent = {__LINE__, ": SendMXLtoBWD failed\n"},
    .unanswered = {__LINE__, ": SendMXLtoBWD failed\n"},
    .unread = {__LINE__, ": GetMXLStatus failed\n"},
    .undetailed = {__LINE__, ": GetMXLErrorDetail failed\n"},
};

constexpr ExchangeWords USER_WORDS = {
    .file = __FILE_NAME__,
    .function = "DelUser",
    .unformatted = {__LINE__, ": asprintf failed\n"},
    .unsent = {__LINE__, ": process_request_bwdclient failed\n"},
    .unanswered = {__LINE__, ": respond is not initialized\n"},
    .unread = {__LINE__, ": GetMXLStatus failed\n"},
    .undetailed = {__LINE__, ": GetMXLErrorDetail failed\n"},
};

bool isEmpty(const char* text)
{
    return text == nullptr || *text == '\0';
}

/** The answer for an account that nobody knows. */
int unknownAccount(const char* username, const char* p2pusername, const char* group)
{
    if (!isEmpty(group) || strchr(username, '@') == nullptr) {
        return SUCCESS;
    }
    DelNetwork(p2pusername);
    return -1;
}

} // namespace

int DelNetwork(const char* username)
{
    if (username == nullptr) {
        LOG(Error, "ERROR [syscmd:DelNetwork]: invalid input arguments\n");
        return -1;
    }
    AUTO_FREE char* request = nullptr;
    if (takeRequest(&request, NETWORK_WORDS, FORMAT_TEMPLATE(MXL_TMPL_DEL_NET, username)) !=
        SUCCESS) {
        return -1;
    }
    AUTO_FREE char* reply = nullptr;
    if (sendRequest(&reply, NETWORK_WORDS, request) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* detail = nullptr;
    switch (readOutcome(&detail, NETWORK_WORDS, reply)) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Refused: // as good as deleted: there is nothing that a caller could do
        LOG(Debug, "syscmd: DelNetwork failed: request=%s respond=%s error_detail=%s\n", request,
            reply, detail);
        return SUCCESS;
    case Outcome::Failed:
        break;
    }
    return -1;
}

int DelUser(const char* username, const char* p2pusername, int force)
{
    if (username == nullptr || p2pusername == nullptr) {
        LOG(Error, "ERROR [syscmd:DelUser]: invalid input arguments\n");
        return -1;
    }
    AUTO_FREE char* id = nullptr;
    AUTO_FREE char* group = nullptr;
    AUTO_FREE char* email = nullptr;
    if (GetUserData(&id, &group, &email, username) == -1) {
        LOG(Error, "ERROR [syscmd:DelUser]: GetUserData failed\n");
        return -1;
    }
    if (isEmpty(id)) {
        AUTO_FREE char* system_id = nullptr;
        if (GetUserIDByUsername(&system_id, username) != SUCCESS) {
            return unknownAccount(username, p2pusername, group);
        }
        std::swap(id, system_id);
    }
    if (force == CLOUD_ACCOUNTS_ONLY && strcmp(group, SKYHOLD_GROUP) != 0) {
        return SUCCESS;
    }

    AUTO_FREE char* request = nullptr;
    if (takeRequest(&request, USER_WORDS, FORMAT_TEMPLATE(DELETE_USER_MXL, id)) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* reply = nullptr;
    if (sendRequest(&reply, USER_WORDS, request) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* detail = nullptr;
    switch (readOutcome(&detail, USER_WORDS, reply)) {
    case Outcome::Done:
        DelNetwork(p2pusername); // the account is gone, whatever becomes of this
        return SUCCESS;
    case Outcome::Refused:
        LOG(Error, "ERROR [syscmd:DelUser]: DelUser failed\n");
        LOG(Error, "ERROR [syscmd:DelUser]: %s", detail);
        break;
    case Outcome::Failed:
        break;
    }
    return -1;
}
