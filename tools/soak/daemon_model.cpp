#include "tools/soak/daemon_model.h"

#include "tools/soak/texts.h"

#include <algorithm>

std::optional<std::int64_t> DaemonModel::id_of(const std::string& name) const
{
    for (const auto& [id, account] : state_.accounts) {
        if (account.name == name) {
            return id;
        }
    }
    return std::nullopt;
}

bool DaemonModel::is_free(const std::string& name, std::int64_t own_id) const
{
    return id_of(name).value_or(own_id) == own_id && !world_.system_users.contains(name);
}

std::optional<PlacedOrder> DaemonModel::take_order()
{
    auto& orders = world_.orders;
    const auto turn = std::find_if(orders.begin(), orders.end(), [](const auto& order) {
        return order.skip == 0;
    });
    std::optional<PlacedOrder> taken;
    if (turn != orders.end()) {
        taken = *turn;
        if (--turn->count == 0) {
            orders.erase(turn);
        }
    }
    for (PlacedOrder& order : orders) {
        order.skip = std::max(order.skip - 1, 0);
    }
    return taken;
}

Outcome DaemonModel::request(const std::function<void()>& change, const char* refusal)
{
    detail = "";
    if (!world_.daemon_lives) {
        return Outcome::Failed;
    }
    const std::optional<PlacedOrder> taken = take_order();
    const std::string kind = taken ? taken->order.kind : "";
    if (kind == "refuse" || kind == "refuse-bare") {
        detail = taken->order.text;
        return Outcome::Refused;
    }
    if (kind == "no-reply" || kind == "fail" || kind == "die") {
        world_.daemon_lives = kind != "die";
        return Outcome::Failed;
    }
    if (change) {
        fate_.effect();
        change();
    }
    if (kind == "cut") { // behind nothing that tells
        return Outcome::Refused;
    }
    detail = change ? "" : refusal;
    return change ? Outcome::Done : Outcome::Refused;
}

std::optional<std::int64_t> DaemonModel::find(const std::string& name)
{
    const auto read = fits_section(name) ? [] {} : std::function<void()>();
    return request(read) == Outcome::Done ? id_of(name) : std::nullopt;
}

Outcome DaemonModel::add(const Account& account)
{
    const std::string texts[] = {account.name, account.smb_hash, account.sys_hash, account.email};
    const bool fits = std::all_of(std::begin(texts), std::end(texts), [](const auto& text) {
        return fits_section(text) && is_kept(text);
    });
    if (!fits || !is_name(account.name) || !is_free(account.name, 0) || fate_.refuses()) {
        return request(nullptr);
    }
    return request([&] {
        Account& added = state_.accounts[++state_.last_id];
        added = account;
        added.id = state_.last_id;
    });
}

Outcome DaemonModel::set(std::int64_t id, const AccountFields& fields, bool well_formed)
{
    const std::string& name = fields.name.value();
    const auto fits = [](const std::optional<std::string>& text) {
        return !text || (fits_section(*text) && is_kept(*text));
    };
    const bool known = state_.accounts.contains(id);
    if (!known || !well_formed || !fits_element(name) || !is_name(name) || !is_free(name, id) ||
        !fits(fields.email) || !fits(fields.smb_hash) || !fits(fields.sys_hash) ||
        !fits(fields.p2p_user_name) || fate_.refuses()) {
        return request(nullptr);
    }
    return request([&] {
        Account& account = state_.accounts[id];
        if (state_.cloud_owner == account.name) {
            state_.cloud_owner = name;
        }
        account.name = name;
        account.group = fields.group.value_or(account.group);
        account.email = fields.email.value_or(account.email);
        account.smb_hash = fields.smb_hash.value_or(account.smb_hash);
        account.sys_hash = fields.sys_hash.value_or(account.sys_hash);
        account.p2p_user_name = fields.p2p_user_name.value_or(account.p2p_user_name);
    });
}

Outcome DaemonModel::remove(std::int64_t id)
{
    if (!state_.accounts.contains(id) || fate_.refuses()) {
        return request(nullptr);
    }
    return request([&] { state_.accounts.erase(id); });
}

Outcome DaemonModel::add_remote_user(const std::string& text)
{
    const std::string name = as_attribute(text);
    const bool present = fits_attribute(text) && state_.remote_users.contains(name);
    if (!fits_attribute(text) || !is_kept(name) || name.empty() || present || fate_.refuses()) {
        return request(nullptr, present ? "User already present" : "");
    }
    return request([&] { state_.remote_users.insert(name); });
}

Outcome DaemonModel::remove_remote_user(const std::string& text)
{
    const std::string name = as_attribute(text);
    if (!fits_attribute(text) || !state_.remote_users.contains(name) || fate_.refuses()) {
        return request(nullptr);
    }
    return request([&] { state_.remote_users.erase(name); });
}

Outcome DaemonModel::release_owner()
{
    return request(fate_.refuses() ? std::function<void()>() : [&] { state_.cloud_owner = ""; });
}
