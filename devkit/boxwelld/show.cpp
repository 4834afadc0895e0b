#include "devkit/boxwelld/show.h"

#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using Json = nlohmann::ordered_json;

Json as_json(Store& store)
{
    Json state = {
        {"groups", Json::array()},
        {"accounts", Json::array()},
        {"remote_users", Json::array()},
        {"cloud_owner", store.cloud_owner()},
    };
    for (const Group& group : store.groups()) {
        state["groups"].push_back({{"name", group.name}, {"id", group.id}});
    }
    for (const Account& account : store.accounts()) {
        state["accounts"].push_back(
            {{"name", account.name},
             {"id", account.id},
             {"group", account.group},
             {"locked", account.locked},
             {"email", account.email},
             {"smb_hash", account.smb_hash},
             {"sys_hash", account.sys_hash},
             {"p2p_user_name", account.p2p_user_name},
             {"member_of", account.member_of}}
        );
    }
    for (const RemoteUser& user : store.remote_users()) {
        state["remote_users"].push_back({{"name", user.name}, {"full_name", user.full_name}});
    }
    return state;
}

/** A further line about an account, where there is something to tell. */
void detail(std::ostream& out, const char* what, const std::string& text)
{
    if (!text.empty()) {
        out << "          " << what << ' ' << text << '\n';
    }
}

std::string for_people(Store& store)
{
    std::ostringstream out;
    out << std::left << "accounts\n";
    for (const Account& account : store.accounts()) {
        out << "  " << std::setw(6) << account.id << "  " << std::setw(31) << account.name << "  "
            << std::setw(10) << account.group << "  "
            << (account.locked ? "locked    " : "unlocked  ") << account.email << '\n';
        detail(out, "smb hash", account.smb_hash);
        detail(out, "sys hash", account.sys_hash);
        detail(out, "p2p user", account.p2p_user_name);
        for (const std::string& group : account.member_of) {
            detail(out, "member of", group);
        }
    }
    out << "groups\n";
    for (const Group& group : store.groups()) {
        out << "  " << std::setw(6) << group.id << "  " << group.name << '\n';
    }
    out << "remote users\n";
    for (const RemoteUser& user : store.remote_users()) {
        out << "          " << user.name << (user.full_name.empty() ? "" : "  ") << user.full_name
            << '\n';
    }
    const std::string owner = store.cloud_owner();
    out << "cloud owner\n          " << (owner.empty() ? "(none)" : owner) << '\n';
    return out.str();
}

} // namespace

std::string show(Store& store, bool json)
{
    return json ? as_json(store).dump(2) + '\n' : for_people(store);
}
