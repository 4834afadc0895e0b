#include "common/io.h"
#include "syscmd/commands/command.h"
#include "syscmd/handler.h"
#include "syscmd/operations.h"

namespace {

constexpr const char* FAILED_TEXT = "system command failed";

/** Adds the one response parameter of a command. */
void answer(ITransaction* pTx, const std::string& response, bool& answered)
{
    pTx->addResponseParam(response);
    answered = true;
}

/** Everything that may throw; `answered` tells whether the response parameter was added. */
void carryOut(ITransaction* pTx, bool& answered)
{
    MAX_LOG_LEVEL = pTx->getLogLevel();
    std::string response;
    setResponse(response, "/root/devices");
    pTx->setMoniker(response);
    setResponse(response, "userstate");
    pTx->setMethod(response);
    setResponse(response, "jobstate");
    pTx->setBodyType(response);
    setResponse(response, FAILED_TEXT);

    std::string name;
    if (!pTx->getRequestParam(0, name)) {
        LOG_IN("execute", 1651, Error, "ERROR [syscmd:execute]: getRequestParam() failed\n");
        setResponse(response, "getRequestParam() failed");
        pTx->setCode(CODE_FAILED);
        answer(pTx, response, answered);
        return;
    }

    int is_owner = 0;
    int is_sh = 0;
    if (AuthenticateUser(name, pTx, is_owner, is_sh) != SUCCESS) {
        setResponse(response, "access denied");
        answer(pTx, response, answered);
        pTx->setCode(CODE_FAILED);
        return;
    }

    const Operation* operation = findOperation(name);
    if (operation != nullptr && mayRun(*operation, is_owner, is_sh)) {
        operation->handle(pTx, response);
        answer(pTx, response, answered);
        return;
    }
    LOG_IN("execute", 1644, Error, "ERROR [syscmd:execute]: unknown operation: %s\n", name.c_str());
    setResponse(response, "operation unknown");
    pTx->setCode(CODE_FAILED);
    answer(pTx, response, answered);
}

/** The answer to a command that an exception ended. */
void answerException(ITransaction* pTx, bool answered) noexcept
{
    try {
        pTx->setCode(CODE_FAILED);
        if (!answered) {
            std::string response;
            setResponse(response, FAILED_TEXT);
            pTx->addResponseParam(response);
        }
    } catch (...) {
        LOG(Error, "ERROR [syscmd:execute]: no memory for a response\n");
    }
}

} // namespace

extern "C" void execute(ITransaction* pTx)
{
    if (pTx == nullptr) {
        return;
    }

    bool answered = false;
    try {
        carryOut(pTx, answered);
    } catch (...) {
        LOG(Error, "ERROR [syscmd:execute]: ended by an exception\n");
        answerException(pTx, answered);
    }
}
