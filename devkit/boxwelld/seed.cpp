#include "devkit/boxwelld/seed.h"

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

void expect_keys(
    const Json& object, const std::string& where, std::initializer_list<const char*> known
)
{
    if (!object.is_object()) {
        throw Refusal(where + " is not an object");
    }
    for (const auto& entry : object.items()) {
        if (std::find(known.begin(), known.end(), entry.key()) == known.end()) {
            throw Refusal(where + " has the unknown key " + entry.key());
        }
    }
}

/** The value of a key, or nothing where it is left out; refused when it is of another kind. */
template<class Value> std::optional<Value> member(const Json& object, const char* key)
{
    if (!object.contains(key)) {
        return std::nullopt;
    }
    const Json& value = object[key];
    const bool fits = std::is_same_v<Value, bool>           ? value.is_boolean()
                      : std::is_same_v<Value, std::int64_t> ? value.is_number_integer()
                      : std::is_same_v<Value, std::string>  ? value.is_string()
                                                            : value.is_array();
    if (!fits) {
        throw Refusal(std::string(key) + " is of the wrong kind: " + value.dump());
    }
    return value.get<Value>();
}

Json list(const Json& object, const char* key)
{
    return member<Json>(object, key).value_or(Json::array());
}

void add_account(Store& store, const Json& account)
{
    expect_keys(
        account, "an account",
        {"name", "id", "group", "locked", "email", "smb_hash", "sys_hash", "p2p_user_name",
         "member_of"}
    );
    const AccountFields fields = {
        .name = member<std::string>(account, "name"),
        .group = member<std::string>(account, "group"),
        .locked = member<bool>(account, "locked"),
        .email = member<std::string>(account, "email"),
        .smb_hash = member<std::string>(account, "smb_hash"),
        .sys_hash = member<std::string>(account, "sys_hash"),
        .p2p_user_name = member<std::string>(account, "p2p_user_name"),
    };
    const std::int64_t id = store.add_account(fields, member<std::int64_t>(account, "id"));
    for (const Json& group : list(account, "member_of")) {
        store.add_membership(id, group.get<std::string>());
    }
}

void add_all(Store& store, const Json& state)
{
    expect_keys(state, "the state", {"groups", "accounts", "remote_users", "cloud_owner"});
    for (const Json& group : list(state, "groups")) {
        expect_keys(group, "a group", {"name", "id"});
        store.add_group(
            member<std::string>(group, "name").value_or(""), member<std::int64_t>(group, "id")
        );
    }
    for (const Json& account : list(state, "accounts")) {
        add_account(store, account);
    }
    for (const Json& user : list(state, "remote_users")) {
        expect_keys(user, "a remote user", {"name", "full_name"});
        store.add_remote_user(
            {member<std::string>(user, "name").value_or(""),
             member<std::string>(user, "full_name").value_or("")}
        );
    }
    store.set_cloud_owner(member<std::string>(state, "cloud_owner").value_or(""));
}

} // namespace

void seed(Store& store, const std::string& text)
{
    const Json state = Json::parse(text);
    store.change([&] {
        store.clear();
        add_all(store, state);
    });
}
