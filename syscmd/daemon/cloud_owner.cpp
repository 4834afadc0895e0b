#include "syscmd/daemon/cloud_owner.h"

#include "liblst/owned.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/handler.h"

namespace {

/** A statement that names its own file and line in its text. */
#define HERE(line) ":" __FILE_NAME__ ":" #line " "

constexpr ExchangeWords WORDS = {
    .file = __FILE_NAME__,
    .function = "Unregister",
    .unformatted = {1199, HERE(1199) "asprintf()\n"},
    .unsent = {1207, HERE(1207) "process_request_bwdclient()\n"},
    .unanswered = {1207, HERE(1207) "process_request_bwdclient()\n"},
    .unread = {1217, HERE(1217) "GetMXLStatus()\n"},
    .undetailed = {1226, HERE(1226) "GetMXLStatus()\n"},
};

} // namespace

int Unregister()
{
    LOG_AT(1190, Debug, "DEBUG:%s:%d Unregister\n", __FILE_NAME__, 1190);

    AUTO_FREE char* request = nullptr;
    if (takeRequest(&request, WORDS, FORMAT_TEMPLATE(UNREGISTER_USER_MXL)) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* reply = nullptr;
    if (sendRequest(&reply, WORDS, request) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* detail = nullptr;
    switch (readOutcome(&detail, WORDS, reply)) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Refused:
        LOG_AT(1233, Error, "ERROR [syscmd:Unregister]:%s:%d %s\n", __FILE_NAME__, 1233, detail);
        break;
    case Outcome::Failed:
        break;
    }
    return -1;
}

namespace {

constexpr CommandWords HANDLER = {
    .file = __FILE_NAME__,
    .function = "UnregisterHandler",
    .unread = "",
    .answer = "",
    .null_line = 1367,
    .unread_line = 0,
    .parameters = 0,
};

void release(ITransaction& tx, std::string& response, const char* const* /*parameters*/)
{
    const int result = Unregister();
    if (result == SUCCESS) {
        tx.setCode(CODE_NOREPLY); // nobody is left to read a response: it stays as it was
        LOG_IN(HANDLER.function, 1375, Info, "[syscmd:UnregisterHandler] :Unregister SUCCESS\n");
        return;
    }
    tx.setCode(CODE_FAILED);
    setResponse(response, "unregister operation failed");
    LOG_IN(
        HANDLER.function, 1382, Error,
        "ERROR [syscmd:UnregisterHandler]: Unregister operation failed with code=%d\n", result
    );
}

} // namespace

void UnregisterHandler(ITransaction* pTx, std::string& response)
{
    runCommand(pTx, response, HANDLER, release);
}
