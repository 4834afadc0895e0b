// A plug-in with an operation of its own: "whoami" tells the requester who they are to this device.
#include <common/common.h>
#include <common/io.h>
#include <common/isowner.h>
#include <common/mxl_templates.h>
#include <liblst/liblst.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace {

struct Free {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>; // what the routines allocate is ours to release

/** The login in the credentials, Base64 of LOGIN:PASSWORD; empty without any. */
std::string loginOf(const ITransaction& transaction)
{
    std::string credentials;
    if (!transaction.getAuthInfo(credentials)) {
        return "";
    }
    const Text decoded(ptDecodeBase64(credentials.c_str()));
    const std::string login = decoded ? decoded.get() : "";
    return login.substr(0, login.find(':'));
}

/** Whether the management daemon answers a query for that name; logs why it does not. */
bool daemonAnswers(const std::string& login)
{
    // The name goes into the request as it is: what may be markup must not come this far.
    const Text request(String(GET_USER_DATA_MXL, "", login.c_str(), ""));
    char* reply = nullptr;
    if (!request || SendMXLtoBWD(&reply, request.get()) != SUCCESS) {
        LOG(Error, "the daemon gave no answer about %s\n", login.c_str());
        return false;
    }
    const Text owned(reply);
    char* status = nullptr;
    const bool read = GetMXLStatus(&status, reply) == SUCCESS;
    const Text owned_status(status);
    return read && std::string(status) == "success";
}

std::string describe(const std::string& login)
{
    if (isOwner(login.c_str()) == 1) {
        return "owner";
    }
    return isUserInGroup(login.c_str(), SKYHOLD_GROUP) == 1 ? "member" : "stranger";
}

void whoAmI(ITransaction& transaction)
{
    const std::string login = loginOf(transaction);
    if (login.find_first_of("<&>") != std::string::npos || !daemonAnswers(login)) {
        transaction.setCode(CODE_FAILED);
        transaction.addResponseParam("unknown");
        return;
    }
    const Text owner(GetSSOOwner());
    const std::string who = describe(login);
    LOG(Info, "%s is %s\n", login.c_str(), who.c_str());
    transaction.setCode(CODE_SUCCEED);
    transaction.addResponseParam(who + " of a device of " + (owner ? owner.get() : "nobody"));
}

} // namespace

extern "C" __attribute__((visibility("default"))) void execute(ITransaction* transaction)
{
    std::string operation;
    try { // nothing may leave this function but an answer
        MAX_LOG_LEVEL = transaction->getLogLevel();
        if (transaction->getRequestParam(0, operation) && operation == "whoami") {
            return whoAmI(*transaction);
        }
        transaction->setCode(CODE_ERR_NOTIMPL);
        transaction->addResponseParam("unknown operation");
    } catch (const std::exception&) {
        transaction->setCode(CODE_FAILED);
    }
}
