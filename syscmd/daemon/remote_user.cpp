#include "syscmd/daemon/remote_user.h"

#include "liblst/owned.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/handler.h"

#include <cstring>

namespace {

constexpr ExchangeWords WORDS = {
    .file = __FILE_NAME__,
    .function = "AddNetwork",
    .unformatted = {333, ": asprintf failed\n"},
    .unsent = {327, ": SendMXLtoBWD failed\n"},
    .unanswered = {327, ": SendMXLtoBWD failed\n"},
    .unread = {321, ": GetMXLStatus failed\n"},
    .undetailed = {314, ": GetMXLErrorDetail failed\n"},
};

} // namespace

int AddNetwork(const char* username, const char* full_name)
{
    if (username == nullptr || full_name == nullptr) {
        LOG_AT(274, Error, "ERROR [syscmd:AddNetwork]: invalid input arguments\n");
        return -1;
    }
    AUTO_FREE char* request = nullptr;
    if (takeRequest(&request, WORDS, FORMAT_TEMPLATE(MXL_TMPL_ADD_NET, full_name, username)) !=
        SUCCESS) {
        return -1;
    }
    LOG_AT(285, Debug, "syscmd:request=%s\n", request);
    AUTO_FREE char* reply = nullptr;
    if (sendRequest(&reply, WORDS, request) != SUCCESS) {
        return -1;
    }
    LOG_AT(288, Debug, "syscmd:respond=%s\n", reply);
    AUTO_FREE char* detail = nullptr;
    switch (readOutcome(&detail, WORDS, reply)) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Refused:
        if (strstr(detail, "User already present") != nullptr) {
            return SUCCESS; // asking twice is no failure
        }
        LOG_AT(307, Error, "ERROR [syscmd:AddNetwork]: AddNetwork failed\n");
        break;
    case Outcome::Failed:
        break;
    }
    return -1;
}

namespace {

constexpr CommandWords HANDLER = {
    .file = __FILE_NAME__,
    .function = "AddRemoteUserHandler",
    .unread = "AddRemoteUser ",
    .answer = "AddRemoteUser: error reading username/password/email params from request",
    .null_line = 1334,
    .unread_line = 1358,
    .parameters = 1,
};

void addRemote(ITransaction& tx, std::string& response, const char* const* parameters)
{
    const char* username = parameters[0];
    const int result = AddNetwork(username, "");
    if (result == SUCCESS) {
        tx.setCode(CODE_SUCCEED);
        setResponse(response, "success");
        LOG_IN(
            HANDLER.function, 1346, Debug,
            "[syscmd:AddRemoteUserHandler] :AddRemoteUser %s success\n", username
        );
        return;
    }
    LOG_IN(
        HANDLER.function, 1351, Error,
        "ERROR [syscmd:AddRemoteUserHandler] :AddRemoteUser %s failed with code=%d\n", username,
        result
    );
    tx.setCode(CODE_FAILED); // the response stays as it was
}

} // namespace

void AddRemoteUserHandler(ITransaction* pTx, std::string& response)
{
    runCommand(pTx, response, HANDLER, addRemote);
}
