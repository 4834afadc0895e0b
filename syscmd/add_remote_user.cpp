#include "syscmd/add_remote_user.h"

#include "liblst/owned.h"
#include "syscmd/handler.h"
#include "syscmd/mxl_exchange.h"
#include "syscmd/mxl_texts.h"
#include "syscmd/parameters.h"

#include <cstring>

namespace {

constexpr ExchangeWords WORDS = {
    .file = __FILE_NAME__,
    .function = "AddNetwork",
    .unformatted = {333, "ERROR [syscmd:AddNetwork]: asprintf failed\n"},
    .unsent = {327, "ERROR [syscmd:AddNetwork]: SendMXLtoBWD failed\n"},
    .unanswered = {327, "ERROR [syscmd:AddNetwork]: SendMXLtoBWD failed\n"},
    .unread = {321, "ERROR [syscmd:AddNetwork]: GetMXLStatus failed\n"},
    .undetailed = {314, "ERROR [syscmd:AddNetwork]: GetMXLErrorDetail failed\n"},
};

} // namespace

int AddNetwork(const char* username, const char* full_name)
{
    if (username == nullptr || full_name == nullptr) {
        LOG_AT(274, Error, "ERROR [syscmd:AddNetwork]: invalid input arguments\n");
        return -1;
    }
    AUTO_FREE char* request = nullptr;
    if (formatRequest(&request, WORDS, ADD_NET_TEXT, full_name, username) != SUCCESS) {
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

void AddRemoteUserHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_AT(1334, Error, "[syscmd:AddRemoteUserHandler] invalid input arguments");
        return;
    }
    std::string username;
    if (!readParameters(*pTx, username)) {
        response = "AddRemoteUser: error reading username/password/email params from request";
        LOG_AT(
            1358, Error,
            "ERROR [syscmd:AddRemoteUserHandler]: AddRemoteUser error reading "
            "username/password/email params from request\n"
        );
        pTx->setCode(CODE_FAILED);
        return;
    }

    const int result = AddNetwork(username.c_str(), "");
    if (result == SUCCESS) {
        pTx->setCode(CODE_SUCCEED);
        response = "success";
        LOG_AT(
            1346, Debug, "[syscmd:AddRemoteUserHandler] :AddRemoteUser %s success\n",
            username.c_str()
        );
        return;
    }
    LOG_AT(
        1351, Error, "ERROR [syscmd:AddRemoteUserHandler] :AddRemoteUser %s failed with code=%d\n",
        username.c_str(), result
    );
    pTx->setCode(CODE_FAILED); // the response stays as it was
}
