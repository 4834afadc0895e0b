#include "syscmd/operations.h"

#include "syscmd/handler.h"

#include <string_view>

constexpr const char* OPERATION_ADDACCOUNT = "adduser";
constexpr const char* OPERATION_DELETEACCOUNT = "deleteuser";
constexpr const char* OPERATION_UPDATE_USER = "updateuser";
constexpr const char* OPERATION_UPGRADE_USER_TO_SSO = "upgradeusertosso";
constexpr const char* OPERATION_ADDREMOTEUSER = "addremoteuser";
constexpr const char* OPERATION_UREGISTER = "unregister";
constexpr const char* OPERATION_INITLOCALSESSION = "initlocalsession";

namespace {

using enum Parameter;
using enum Requester;

constexpr Operation OPERATIONS[] = {
    {OPERATION_ADDACCOUNT, Owner, AddAccountHandler, {User, Pair, Email}},
    {OPERATION_ADDREMOTEUSER, Owner, AddRemoteUserHandler, {User}},
    {OPERATION_UREGISTER, Anyone, UnregisterHandler, {}},
    {OPERATION_DELETEACCOUNT, OwnerOrMember, DeleteAccountHandler, {User, P2pUser}},
    {OPERATION_UPGRADE_USER_TO_SSO, OwnerOrMember, UpgradeUserToSSOHandler, {User, Email, Pair}},
    {OPERATION_UPDATE_USER, OwnerOrMember, UpdateUserHandler, {User, Pair, Email, P2pUser}},
    {OPERATION_INITLOCALSESSION, OwnerOrMember, InitLocalSessionHandler, {User, Token, Expiry}},
};

} // namespace

const Operation* findOperation(const std::string& name)
{
    for (const Operation& operation : OPERATIONS) {
        if (std::string_view(name) == operation.name) {
            return &operation;
        }
    }
    return nullptr;
}

bool mayRun(const Operation& operation, int is_owner, int is_sh)
{
    switch (operation.requester) {
    case Requester::Anyone:
        return true;
    case Requester::OwnerOrMember:
        return is_owner == 1 || is_sh == 1;
    case Requester::Owner:
        break;
    }
    return is_owner == 1;
}
