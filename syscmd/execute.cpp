#include "common/log.h"
#include "common/result.h"
#include "syscmd/commands/command.h"
#include "syscmd/handler.h"
#include "syscmd/operations.h"

using namespace std::string_literals;

namespace {

constexpr Speaker EXECUTE = SPEAKER("execute");

/** The response unless a handler has a better one. It exists from load on: the answer to exhausted
 * memory needs none. */
const std::string FAILED = "system command failed";

/** Adds the one response parameter of a command, FAILED for an empty one; `answered` tells that it
 * was added. */
void answer(ITransaction& tx, const std::string& response, bool& answered)
{
    tx.addResponseParam(response.empty() ? FAILED : response);
    answered = true;
}

/** Everything that may throw. */
void carryOut(ITransaction& tx, bool& answered)
{
    MAX_LOG_LEVEL = tx.getLogLevel();
    tx.setMoniker("/root/devices"s);
    tx.setMethod("userstate"s);
    tx.setBodyType("jobstate"s);
    std::string response; // empty until there is a better one than FAILED

    std::string name;
    if (!tx.getRequestParam(0, name)) {
        LOG_AS_AT(
            EXECUTE, 1651, Error, "ERROR [syscmd:%s]: getRequestParam() failed\n", EXECUTE.function
        );
        fail(tx, response, "getRequestParam() failed");
        return answer(tx, response, answered);
    }

    int is_owner = 0;
    int is_sh = 0;
    if (AuthenticateUser(name, &tx, is_owner, is_sh) != SUCCESS) {
        answer(tx, "access denied"s, answered);
        return tx.setCode(CODE_FAILED);
    }

    const Operation* operation = findOperation(name);
    if (operation != nullptr && mayRun(*operation, is_owner, is_sh)) {
        operation->handle(&tx, response);
    } else {
        LOG_AS_AT(
            EXECUTE, 1644, Error, "ERROR [syscmd:%s]: unknown operation: %s\n", EXECUTE.function,
            LOGGED(name.c_str())
        );
        fail(tx, response, "operation unknown");
    }
    answer(tx, response, answered);
}

/** Makes one more call of the broker's, which may throw again; whether it came to its end. */
template<typename Call> bool succeeds(Call call) noexcept
{
    try {
        call();
        return true;
    } catch (...) {
        return false;
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
        carryOut(*pTx, answered);
    } catch (...) {
        LOG(Error, "ERROR [syscmd:%s]: ended by an exception\n", __func__);
        succeeds([&] { pTx->setCode(CODE_FAILED); });
        if (!answered && !succeeds([&] { pTx->addResponseParam(FAILED); })) {
            LOG(Error, "ERROR [syscmd:%s]: no memory for a response\n", __func__);
        }
    }
}
