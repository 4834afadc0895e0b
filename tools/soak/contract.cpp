#include "tools/soak/contract.h"

#include "tools/soak/daemon_model.h"
#include "tools/soak/session_model.h"
#include "tools/soak/texts.h"

#include <glib.h>
#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

constexpr std::size_t LONGEST_NAME = 31;
constexpr std::size_t KEPT_OF_NAME = 27;

const std::string MISSING = "error reading username/password/email params from request";
const Expected SUCCESS_ANSWER = {CODE_SUCCEED, "success"};

struct HashPair {
    std::string smb;
    std::string system;
};

std::optional<HashPair> decoded(const std::string& text)
{
    gsize length = 0;
    const std::unique_ptr<guchar, decltype(&g_free)> bytes(
        g_base64_decode(text.c_str(), &length), g_free
    );
    const std::string pair(reinterpret_cast<const char*>(bytes.get()), length);
    const std::size_t colon = pair.find(':');
    if (colon == std::string::npos) {
        return std::nullopt;
    }
    return HashPair{pair.substr(0, colon), pair.substr(colon + 1)};
}

/** What an update says, but for the hashes. */
AccountFields update_of(const std::string& name, const std::string& email)
{
    AccountFields fields;
    fields.name = name;
    fields.email = email;
    return fields;
}

class Contract {
  public:
    Contract(const Command& command, State& state, World& world, Fate& fate)
        : words_(command.words), state_(state), world_(world), fate_(fate),
          daemon_(state, world, fate), login_(login_of(command))
    {
    }

    Expected answer();

  private:
    static std::string login_of(const Command& command);

    bool is_owner() const;
    bool is_member();
    std::string owner() const
    {
        return between(state_.owner_file.value_or(""), "<owner>", "</owner>");
    }
    /** The account or system user of that name, without asking the daemon. */
    std::optional<std::int64_t> local_id(const std::string& name) const;

    bool delete_user(const std::string& name, const std::string& p2p_name, bool any_group);
    bool update(std::int64_t id, AccountFields fields, const std::optional<std::string>& hashes);
    bool move_away(const std::string& name);
    bool write_owner_file(const std::string& name, const std::string& p2p_name);

    Expected adduser();
    Expected addremoteuser();
    Expected deleteuser();
    Expected unregister();
    Expected updateuser();
    Expected upgradeusertosso();
    Expected initlocalsession();

    bool has_parameters(std::size_t count) const { return words_.size() > count; }

    std::vector<std::string> words_;
    State& state_;
    World& world_;
    Fate& fate_;
    DaemonModel daemon_;
    std::string login_;
};

std::string Contract::login_of(const Command& command)
{
    const std::string credentials = command.credentials.value_or("");
    const std::size_t colon = credentials.find(':');
    return colon == std::string::npos ? credentials
                                      : credentials.substr(0, std::min(colon, LONGEST_NAME));
}

Expected Contract::answer()
{
    struct Operation {
        const char* name;
        bool checked;
        bool owners_only;
        Expected (Contract::*carry_out)();
    };
    static constexpr Operation OPERATIONS[] = {
        {"adduser", true, true, &Contract::adduser},
        {"addremoteuser", true, true, &Contract::addremoteuser},
        {"unregister", false, false, &Contract::unregister},
        {"deleteuser", true, false, &Contract::deleteuser},
        {"upgradeusertosso", true, false, &Contract::upgradeusertosso},
        {"updateuser", true, false, &Contract::updateuser},
        {"initlocalsession", true, false, &Contract::initlocalsession},
    };
    if (words_.empty()) {
        return {CODE_FAILED, "getRequestParam() failed"};
    }
    for (const Operation& operation : OPERATIONS) {
        if (words_[0] != operation.name) {
            continue;
        }
        const bool owner = operation.checked && is_owner();
        if (operation.checked && !owner && !is_member()) {
            return {CODE_FAILED, "access denied"};
        }
        if (operation.owners_only && !owner) {
            break;
        }
        return (this->*operation.carry_out)();
    }
    return {CODE_FAILED, "operation unknown"};
}

bool Contract::is_owner() const
{
    const std::string file = state_.owner_file.value_or("");
    const std::string p2p_owner = between(file, "<p2powner>", "</p2powner>");
    return !file.empty() && (strcasecmp(head(owner()).c_str(), login_.c_str()) == 0 ||
                             strcasecmp(p2p_owner.c_str(), login_.c_str()) == 0);
}

bool Contract::is_member()
{
    const auto id = daemon_.find(login_);
    if (!id) {
        return false;
    }
    const Account& account = state_.accounts[*id];
    const auto& others = account.member_of;
    return !account.locked && (account.group == "sky-hold" ||
                               std::find(others.begin(), others.end(), "sky-hold") != others.end());
}

std::optional<std::int64_t> Contract::local_id(const std::string& name) const
{
    const auto known = world_.system_users.find(name);
    return known == world_.system_users.end() ? daemon_.id_of(name) : known->second;
}

bool Contract::delete_user(const std::string& name, const std::string& p2p_name, bool any_group)
{
    const auto id = daemon_.find(name);
    if (!id) {
        return false;
    }
    if (!any_group && state_.accounts[*id].group != "sky-hold") {
        return true;
    }
    if (daemon_.remove(*id) != Outcome::Done) {
        return false;
    }
    daemon_.remove_remote_user(p2p_name);
    return true;
}

bool Contract::update(
    std::int64_t id, AccountFields fields, const std::optional<std::string>& hashes
)
{
    if (state_.owner_file.value_or("").empty()) {
        return false; // in whose name?
    }
    if (hashes) {
        const auto pair = decoded(*hashes);
        if (!pair) {
            return false;
        }
        fields.smb_hash = pair->smb;
        fields.sys_hash = pair->system;
    }
    const bool one_line = head(owner()).find("\r\n") == std::string::npos;
    return daemon_.set(id, fields, one_line) == Outcome::Done;
}

/** Gives an account in the way another name. */
bool Contract::move_away(const std::string& name)
{
    const auto id = daemon_.find(name);
    if (!id) {
        return true;
    }
    std::string suffix;
    std::srand(static_cast<unsigned>(world_.now));
    for (int i = 0; i < 4; ++i) {
        suffix += "0123456789abcdef"[std::rand() % 16];
    }
    const std::string derived = name.substr(0, KEPT_OF_NAME) + suffix;
    return update(*id, update_of(derived, state_.accounts[*id].email), std::nullopt);
}

bool Contract::write_owner_file(const std::string& name, const std::string& p2p_name)
{
    fate_.effect();
    state_.owner_file = "";
    if (!world_.informed) {
        fate_.effect();
        state_.owner_file = std::nullopt;
        return false;
    }
    if (!fate_.refuses()) { // unseen: the text is written when the file is closed
        fate_.effect();
        state_.owner_file = owner_text(world_, name, p2p_name);
    }
    return true;
}

Expected Contract::adduser()
{
    if (!has_parameters(3)) {
        return {CODE_FAILED, "Add User: " + MISSING};
    }
    delete_user(words_[1], words_[1], false);
    const auto pair = decoded(words_[2]);
    const bool added = pair && daemon_.add(
                                   {.name = head(words_[1]),
                                    .group = "sky-hold",
                                    .locked = true,
                                    .email = words_[3],
                                    .smb_hash = pair->smb,
                                    .sys_hash = pair->system,
                                    .p2p_user_name = "",
                                    .member_of = {}}
                               ) == Outcome::Done;
    return added ? SUCCESS_ANSWER : Expected{CODE_FAILED, "AddUser failed"};
}

Expected Contract::addremoteuser()
{
    if (!has_parameters(1)) {
        return {CODE_FAILED, "AddRemoteUser: " + MISSING};
    }
    const Outcome outcome = daemon_.add_remote_user(words_[1]);
    const bool there = outcome == Outcome::Done ||
                       (outcome == Outcome::Refused &&
                        daemon_.detail.find("User already present") != std::string::npos);
    return there ? SUCCESS_ANSWER : Expected{CODE_FAILED, "system command failed"};
}

Expected Contract::deleteuser()
{
    if (!has_parameters(2)) {
        return {CODE_FAILED, "Delete User: error reading username/password params from request"};
    }
    const bool deleted = delete_user(head(words_[1]), words_[2], true);
    const bool by_address = words_[1].find('@') != std::string::npos;
    return deleted || by_address ? SUCCESS_ANSWER : Expected{CODE_FAILED, "DeleteUser failed"};
}

Expected Contract::unregister()
{
    return daemon_.release_owner() == Outcome::Done
               ? Expected{CODE_NOREPLY, "system command failed"}
               : Expected{CODE_FAILED, "unregister operation failed"};
}

Expected Contract::updateuser()
{
    if (!has_parameters(4)) {
        return {CODE_FAILED, "Update User: " + MISSING};
    }
    const std::string old_name = head(words_[1]);
    const std::string new_name = head(words_[3]);
    const std::string& p2p_name = words_[4];
    bool clear = true;
    if (p2p_name != new_name) {
        if (old_name != new_name) {
            move_away(new_name); // what follows decides
        }
        clear = move_away(p2p_name);
    }
    if (!clear) {
        return {CODE_FAILED, "UpdateUser failed"};
    }
    const auto id = local_id(old_name);
    if (!id) {
        return {CODE_FAILED, "UpdateUser failed: unable to get local user id"};
    }
    const bool owners = owner() == old_name && !state_.owner_file.value_or("").empty();
    AccountFields fields = update_of(new_name, words_[3]);
    fields.group = owners ? "admin" : "sky-hold";
    fields.p2p_user_name = p2p_name;
    if (!update(*id, fields, words_[2])) {
        return {CODE_FAILED, "UpdateUser failed"};
    }
    const std::string p2p_owner = between(*state_.owner_file, "<p2powner>", "</p2powner>");
    if (owners && !write_owner_file(new_name, p2p_owner)) {
        return {CODE_FAILED, "UpdateUser failed"};
    }
    return SUCCESS_ANSWER;
}

Expected Contract::upgradeusertosso()
{
    if (!has_parameters(3)) {
        return {CODE_FAILED, "UpgradeUserToSSO: " + MISSING};
    }
    const std::string& p2p_name = words_[1];
    const std::string new_name = head(words_[2]);
    const auto id = local_id(p2p_name);
    if (!id) {
        return {
            CODE_FAILED, "UpgradeUserToSSO: failed retrieve local user by username:" + p2p_name};
    }
    const bool owners = owner() == p2p_name && !state_.owner_file.value_or("").empty();
    AccountFields fields = update_of(new_name, words_[2]);
    fields.group = owners ? "admin" : "sky-hold";
    fields.p2p_user_name = p2p_name;
    bool done = update(
        *id, fields, words_[3].empty() ? std::nullopt : std::optional<std::string>(words_[3])
    );
    if (owners && !write_owner_file(new_name, p2p_name)) {
        done = false;
    }
    fate_.effect();
    state_.upgraded = true;
    return done ? SUCCESS_ANSWER
                : Expected{CODE_FAILED, "UpgradeUserToSSO: error upgrading p2p user:" + p2p_name};
}

Expected Contract::initlocalsession()
{
    if (!has_parameters(3)) {
        return {
            CODE_FAILED,
            "InitLocalSession: error reading username/token/sessionid/seed params from request"};
    }
    const bool pinned = words_[3] == "0";
    sweep_sessions(state_, world_, fate_, pinned ? std::optional(head(words_[1])) : std::nullopt);
    record_session(state_, world_, fate_, words_[2], head(words_[1]), pinned);
    return SUCCESS_ANSWER;
}

} // namespace

std::string head(const std::string& name)
{
    return name.substr(0, LONGEST_NAME);
}

std::string owner_text(const World& world, const std::string& owner, const std::string& p2p_owner)
{
    return R"(<?xml version="1.0" encoding="utf-8"?><registration><owner>)" + owner + "</owner>" +
           world.elements + "<p2powner>" + p2p_owner + "</p2powner></registration>";
}

Expected carry_out(const Command& command, State& state, World& world, Fate& fate)
{
    return Contract(command, state, world, fate).answer();
}
