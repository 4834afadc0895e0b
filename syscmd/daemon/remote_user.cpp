#include "syscmd/daemon/remote_user.h"

#include "common/mxl_templates.h"
#include "common/result.h"
#include "liblst/liblst.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/daemon/printable.h"

#include <cstring>

namespace {

constexpr Exchange ADDITION = {
    .speaker = SPEAKER("AddNetwork"),
    .unformatted = {333, ": asprintf failed\n"},
    .unsent = {327, ": SendMXLtoBWD failed\n"},
    .unanswered = {327, ": SendMXLtoBWD failed\n"},
    .unread = {321, ": GetMXLStatus failed\n"},
    .undetailed = {314, ": GetMXLErrorDetail failed\n"},
    .shown_request = 285,
    .shown_reply = 288,
};

/** The call that fails and the one that brings no reply are one failure, said in one statement. */
constexpr Words UNDELIVERED = {__LINE__, ": SendMXLtoBWD failed\n"};

constexpr Exchange DELETION = {
    .speaker = SPEAKER("DelNetwork"),
    .unformatted = {__LINE__, ": asprintf failed\n"},
    .unsent = UNDELIVERED,
    .unanswered = UNDELIVERED,
    .unread = {__LINE__, ": GetMXLStatus failed\n"},
    .undetailed = {__LINE__, ": GetMXLErrorDetail failed\n"},
};

} // namespace

int AddNetwork(const char* username, const char* full_name)
{
    if (username == nullptr) {
        LOG_INVALID_INPUT(274);
        return -1;
    }
    AUTO_ANSWER Answer answer = {};
    switch (ask(answer, ADDITION, String(MXL_TMPL_ADD_NET_TEXT, printable(full_name), username))) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Failed:
        return -1;
    case Outcome::Refused:
        break;
    }
    if (strstr(answer.detail, "User already present") != nullptr) {
        return SUCCESS; // asking twice is no failure
    }
    LOG_AT(307, Error, "ERROR [syscmd:%s]: AddNetwork failed\n", __func__);
    return -1;
}

int DelNetwork(const char* username)
{
    if (username == nullptr) {
        LOG_INVALID_INPUT(__LINE__);
        return -1;
    }
    AUTO_ANSWER Answer answer = {};
    switch (ask(answer, DELETION, String(MXL_TMPL_DEL_NET_TEXT, username))) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Failed:
        return -1;
    case Outcome::Refused:
        break;
    }
    // As good as deleted: there is nothing that a caller could do.
    LOG(Debug, "syscmd: DelNetwork failed: request=%s respond=%s error_detail=%s\n", answer.request,
        answer.reply, answer.detail);
    return SUCCESS;
}
