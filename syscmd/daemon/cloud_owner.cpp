#include "syscmd/daemon/cloud_owner.h"

#include "common/mxl_templates.h"
#include "common/result.h"
#include "syscmd/daemon/exchange.h"

#include <cstring>

namespace {

/** What a statement says that names its own file and line. */
#define AT(line) ":" __FILE_NAME__ ":" #line " "

constexpr Words UNDELIVERED = {1207, AT(1207) "process_request_bwdclient()\n"};

constexpr Exchange RELEASE = {
    .speaker = SPEAKER("Unregister"),
    .unformatted = {1199, AT(1199) "asprintf()\n"},
    .unsent = UNDELIVERED,
    .unanswered = UNDELIVERED,
    .unread = {1217, AT(1217) "GetMXLStatus()\n"},
    .undetailed = {1226, AT(1226) "GetMXLStatus()\n"},
};

} // namespace

int Unregister()
{
    LOG_AT(1190, Debug, "DEBUG:%s:%d Unregister\n", __FILE_NAME__, 1190);

    AUTO_ANSWER Answer answer = {};
    switch (ask(answer, RELEASE, strdup(UNREGISTER_USER_MXL_TEXT))) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Failed:
        return -1;
    case Outcome::Refused:
        break;
    }
    LOG_AT(
        1233, Error, "ERROR [syscmd:%s]:%s:%d %s\n", __func__, __FILE_NAME__, 1233, answer.detail
    );
    return -1;
}
