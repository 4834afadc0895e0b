#include "devkit/broker/state/overview.h"

#include <strings.h>

#include <algorithm>

namespace {

constexpr char CLOUD_GROUP[] = "sky-hold";
/** Of the owner's name, as of every account's, so many bytes count. */
constexpr std::size_t LONGEST_NAME = 31;

bool same(const std::string& one, const std::string& other)
{
    return strcasecmp(one.c_str(), other.c_str()) == 0;
}

/** Whether a requester of that name is the owner: by his account's or his remote-access name. */
bool is_owner(const std::string& name, const std::optional<OwnerFile>& file)
{
    return file && (same(name, file->owner.substr(0, LONGEST_NAME)) || same(name, file->p2p_owner));
}

bool contains(const std::vector<std::string>& all, const std::string& one)
{
    return std::find(all.begin(), all.end(), one) != all.end();
}

/** A member is one by the system's groups, whom the daemon does not tell to be locked. */
Role role_of(const AccountView& account, const std::optional<OwnerFile>& owner_file)
{
    if (is_owner(account.name, owner_file)) {
        return Role::Owner;
    }
    const auto& system = account.system;
    if (!system || (system->group != CLOUD_GROUP && !contains(system->member_of, CLOUD_GROUP))) {
        return Role::Stranger;
    }
    if (!account.daemon) {
        return Role::Stranger;
    }
    return account.daemon->locked ? Role::LockedMember : Role::Member;
}

std::vector<std::string> sorted(std::vector<std::string> names)
{
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> differences_of(const AccountView& account)
{
    if (!account.system) {
        return {"is not in the system"};
    }
    if (!account.daemon) {
        return {"is not in the daemon"};
    }
    std::vector<std::string> differences;
    if (account.daemon->id != account.system->id) {
        differences.push_back(
            "has the id " + std::to_string(account.system->id) + " in the system"
        );
    }
    if (account.daemon->group != account.system->group) {
        differences.push_back("is of the group " + account.system->group + " in the system");
    }
    if (sorted(account.daemon->member_of) != sorted(account.system->member_of)) {
        differences.emplace_back("has other further groups in the system");
    }
    return differences;
}

std::vector<AccountView> accounts_of(const DeviceState& state)
{
    std::map<std::string, SystemAccount> system;
    for (const SystemAccount& account : state.system_accounts) {
        system.emplace(account.name, account);
    }
    std::vector<AccountView> accounts;
    for (const DaemonAccount& account : state.daemon_accounts) {
        AccountView view{.name = account.name, .daemon = account, .system = {}, .differences = {}};
        if (auto node = system.extract(account.name)) {
            view.system = std::move(node.mapped());
        }
        accounts.push_back(std::move(view));
    }
    for (auto& [name, account] : system) {
        accounts.push_back(
            {.name = name, .daemon = {}, .system = std::move(account), .differences = {}}
        );
    }
    for (AccountView& account : accounts) {
        account.role = role_of(account, state.owner_file);
        account.differences = differences_of(account);
    }
    return accounts;
}

void remark_on_owner(const DeviceState& state, Overview& overview)
{
    auto& remarks = overview.remarks;
    if (!state.owner_file) {
        remarks.emplace_back("There is no owner file: the device has no owner.");
        return;
    }
    const std::string& owner = state.owner_file->owner;
    if (owner.empty()) {
        remarks.emplace_back("The owner file names no owner: who comes with an empty login is one."
        );
        return;
    }
    if (std::none_of(overview.accounts.begin(), overview.accounts.end(), [&](const auto& account) {
            return same(account.name, owner.substr(0, LONGEST_NAME));
        })) {
        remarks.push_back("The owner file's owner, " + owner + ", has no account.");
    }
    if (!same(state.cloud_owner, owner)) {
        remarks.push_back(
            "The owner file names " + owner + ", the daemon " +
            (state.cloud_owner.empty() ? "nobody" : state.cloud_owner) +
            " as the owner in the cloud."
        );
    }
}

} // namespace

Overview overview_of(const DeviceState& state)
{
    Overview overview{.accounts = accounts_of(state), .remarks = {}};
    remark_on_owner(state, overview);
    if (!state.daemon_answers) {
        overview.remarks.emplace_back(
            "The daemon does not answer: every command that needs it fails."
        );
    }
    for (const auto& [key, value] : state.information) {
        if (value.empty() || value.find("ERROR:") != std::string::npos) {
            overview.remarks.push_back(
                "boxwellinfo " + key + " has no answer: an owner file written now is deleted."
            );
        }
    }
    return overview;
}

bool all_agrees(const Overview& overview)
{
    return overview.remarks.empty() &&
           std::all_of(overview.accounts.begin(), overview.accounts.end(), [](const auto& account) {
               return account.differences.empty();
           });
}

const char* role_name(Role role)
{
    switch (role) {
    case Role::Owner:
        return "owner";
    case Role::Member:
        return "member";
    case Role::LockedMember:
        return "locked member";
    case Role::Stranger:
        break;
    }
    return "stranger";
}
