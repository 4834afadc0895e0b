// Each floor has the operation's requests, look-ups, statements and effects in their order, and
// none of its checks: it knows that the command succeeds.
#include "bench/bare_operations.h"

#include "bench/bare_parts.h"
#include "bench/bare_sessions.h"
#include "common/common.h"
#include "common/mxl_templates.h"

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

namespace {

/** Parameter `index` of the command. */
std::string parameter(const ITransaction& transaction, int index)
{
    std::string value;
    transaction.getRequestParam(index, value);
    return value;
}

bool reading_once = false;
Text owner_file; // as the requester's check read it

/** The owner's name, read anew where the file is read more than once. */
Text ownerOfDevice()
{
    return reading_once ? copyOf(between(owner_file.get(), "<owner>", "</owner>")) : ownerName();
}

void authenticate(const ITransaction& transaction)
{
    std::string credentials;
    transaction.getAuthInfo(credentials);
    const Text login = decode(credentials);
    *std::strchr(login.get(), ':') = '\0';
    owner_file = readOwnerFile();
    const std::string_view owner = between(owner_file.get(), "<owner>", "</owner>");
    const int is_owner = strncasecmp(owner.data(), login.get(), owner.size()) == 0 ? 1 : 0;
    const int is_sh = is_owner == 1 || isMember(login.get()) ? 1 : 0;
    BARE_DEBUG(
        "INFO [syscmd:execute]: ACCESS REQUESTED for SYS: login=%s is_owner=%d is_sh=%d\n",
        login.get(), is_owner, is_sh
    );
}

void exchange(const Text& request)
{
    if (!succeeded(send(request))) {
        std::abort();
    }
}

/** The same, with both texts logged. */
void exchangeShown(const Text& request)
{
    BARE_DEBUG("syscmd:request=%s\n", request.get());
    const Text reply = send(request);
    BARE_DEBUG("syscmd:respond=%s\n", reply.get());
    if (!succeeded(reply)) {
        std::abort();
    }
}

void deleteUser(const char* username, const char* remote_name)
{
    const BareUser user = queryUser(username);
    exchange(format(DELETE_USER_MXL_TEXT, user.id.get()));
    exchange(format(MXL_TMPL_DEL_NET_TEXT, remote_name));
}

/** The two hashes of a pair, in its decoded text. */
struct Hashes {
    Text text;
    const char* system;
};

Hashes decodeHashes(const std::string& pair)
{
    Hashes hashes = {decode(pair), nullptr};
    char* colon = std::strchr(hashes.text.get(), ':');
    *colon = '\0';
    hashes.system = colon + 1;
    return hashes;
}

void addUser(ITransaction& transaction, std::string& response)
{
    const std::string username = parameter(transaction, 1);
    const std::string pair = parameter(transaction, 2);
    const std::string email = parameter(transaction, 3);
    deleteUser(username.c_str(), username.c_str());
    const Hashes hashes = decodeHashes(pair);
    BARE_INFO(
        "[syscmd::AddUser] username=%s, syshash=%s, smbhash=%s, email=%s", username.c_str(),
        hashes.system, hashes.text.get(), email.c_str()
    );
    exchange(format(
        ADD_USER_MXL_TEXT, "User", username.c_str(), hashes.text.get(), hashes.system, "sky-hold",
        email.c_str()
    ));
    transaction.setCode(CODE_SUCCEED);
    response = "success";
    BARE_DEBUG("[syscmd:AddAccountHandler] :AddUser %s success\n", username.c_str());
}

void addRemoteUser(ITransaction& transaction, std::string& response)
{
    const std::string username = parameter(transaction, 1);
    exchangeShown(format(MXL_TMPL_ADD_NET_TEXT, "", username.c_str()));
    transaction.setCode(CODE_SUCCEED);
    response = "success";
    BARE_DEBUG("[syscmd:AddRemoteUserHandler] :AddRemoteUser %s success\n", username.c_str());
}

void deleteAccount(ITransaction& transaction, std::string& response)
{
    const std::string username = parameter(transaction, 1);
    const std::string remote_name = parameter(transaction, 2);
    deleteUser(username.c_str(), remote_name.c_str());
    BARE_DEBUG("[syscmd:DeleteAccountHandler: DelUser %s success\n", username.c_str());
    response = "success";
    transaction.setCode(CODE_SUCCEED);
}

void unregister(ITransaction& transaction, std::string& /*response*/)
{
    BARE_DEBUG("DEBUG:%s:%d Unregister\n", "cloud_owner.cpp", 1190);
    exchange(Text(strdup(UNREGISTER_USER_MXL_TEXT)));
    transaction.setCode(CODE_NOREPLY);
    BARE_INFO("[syscmd:UnregisterHandler] :Unregister SUCCESS\n");
}

/** The change with new hashes and a cloud user. */
void changeUser(
    const char* id,
    const char* username,
    const std::string& pair,
    const char* email,
    const char* p2p
)
{
    const Text owner = ownerOfDevice();
    const bool is_owner = std::strcmp(owner.get(), username) == 0;
    const char* group = is_owner ? "admin" : "sky-hold";
    const Hashes hashes = decodeHashes(pair);
    BARE_INFO(
        "[syscmd:UpdateUser] username=%s, smbhash=%s, syshash=%s, group=%s, email=%s "
        "p2pusername=%s\n",
        email, hashes.text.get(), hashes.system, group, email, p2p
    );
    exchangeShown(format(
        RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_TEXT, owner.get(), id, id, id, email,
        hashes.text.get(), hashes.system, group, email, p2p
    ));
}

void updateUser(ITransaction& transaction, std::string& response)
{
    transaction.setCode(CODE_SUCCEED);
    response = "success";
    const std::string username = parameter(transaction, 1);
    const std::string pair = parameter(transaction, 2);
    const std::string email = parameter(transaction, 3);
    const std::string p2p = parameter(transaction, 4);
    BARE_DEBUG("syscmd:UpdateUserHandler %s\n", username.c_str());
    const Text id = systemId(username.c_str());
    changeUser(id.get(), username.c_str(), pair, email.c_str(), p2p.c_str());
}

void upgradeUser(ITransaction& transaction, std::string& response)
{
    const std::string p2p = parameter(transaction, 1);
    const std::string email = parameter(transaction, 2);
    const std::string pair = parameter(transaction, 3);
    BARE_INFO("syscmd:UpgradeUserToSSOHandler %s %s", p2p.c_str(), email.c_str());
    const Text id = systemId(p2p.c_str());
    changeUser(id.get(), p2p.c_str(), pair, email.c_str(), p2p.c_str());
    close(creat(SSO_UPGRADE_FLAG, 0644));
    transaction.setCode(CODE_SUCCEED);
    response = "success";
    BARE_DEBUG("[syscmd:UpgradeUserToSSOHandler]: UpgradeUserToSSO %s success", p2p.c_str());
}

void initLocalSession(ITransaction& transaction, std::string& response)
{
    const std::string username = parameter(transaction, 1);
    const std::string token = parameter(transaction, 2);
    const std::string expires = parameter(transaction, 3);
    BARE_INFO("[syscmd:InitLocalSessionHandler]: InitLocalSession %s", username.c_str());
    bareSweep(expires == "0" ? username.c_str() : nullptr);
    bareRecord(token, username);
    transaction.setCode(CODE_SUCCEED);
    response = "success";
    BARE_DEBUG("[syscmd:InitLocalSessionHandler]: InitLocalSession %s success", username.c_str());
}

struct Floor {
    const char* name;
    void (*carryOut)(ITransaction&, std::string&);
};

constexpr Floor FLOORS[] = {
    {"adduser", addUser},
    {"addremoteuser", addRemoteUser},
    {"deleteuser", deleteAccount},
    {"unregister", unregister},
    {"updateuser", updateUser},
    {"upgradeusertosso", upgradeUser},
    {"initlocalsession", initLocalSession},
};

} // namespace

void bareExecute(ITransaction& transaction)
{
    MAX_LOG_LEVEL = transaction.getLogLevel();
    transaction.setMoniker("/root/devices");
    transaction.setMethod("userstate");
    transaction.setBodyType("jobstate");
    std::string response;
    const std::string name = parameter(transaction, 0);
    if (name != "unregister") {
        authenticate(transaction);
    }
    for (const Floor& floor : FLOORS) {
        if (name == floor.name) {
            floor.carryOut(transaction, response);
            break;
        }
    }
    static const std::string FAILED = "system command failed";
    transaction.addResponseParam(response.empty() ? FAILED : response);
}

void bareExecuteReadingOnce(ITransaction& transaction)
{
    reading_once = true;
    bareExecute(transaction);
    reading_once = false;
}
