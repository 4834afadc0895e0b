#include "devkit/broker/record/device_state.h"

#include "devkit/broker/device.h"
#include "devkit/recording/characters.h"

#include <filesystem>
#include <fstream>

using nlohmann::json;

namespace {

void add_daemon(Facts& facts)
{
    const json state = device::daemon_state();
    if (state.is_null()) {
        return;
    }
    for (const json& group : state["groups"]) {
        facts[{"group", group["name"]}] = group["id"];
    }
    for (json account : state["accounts"]) {
        const std::string id = account["id"].dump();
        account.erase("id");
        facts[{"account", id}] = account;
    }
    for (const json& user : state["remote_users"]) {
        facts[{"remote user", user["name"]}] = user["full_name"];
    }
    facts[{"cloud owner", ""}] = state["cloud_owner"];
}

void add_passwd(Facts& facts)
{
    for (const device::Person& person : device::people()) {
        facts[{"passwd", as_characters(person.name)}] = as_characters(
            std::to_string(person.id) + ':' + std::to_string(person.group) + ':' + person.home +
            ':' + person.shell
        );
    }
}

void add_sessions(Facts& facts)
{
    for (const device::Session& session : device::sessions()) {
        facts[{"session", as_characters(session.token)}] = {
            {"user", as_characters(session.user)},
            {"mode", std::to_string(session.mode)},
            {"pinned", session.pinned},
            {"expired", session.age > device::SESSION_SECONDS},
        };
    }
}

void add_events(Facts& facts)
{
    std::ifstream events(EVENTS_FILE);
    int number = 1;
    for (std::string line; std::getline(events, line); ++number) {
        const json arguments = json::parse(line, nullptr, false);
        if (arguments.is_array()) {
            facts[{"event", std::to_string(number)}] = arguments;
        }
    }
}

} // namespace

Facts device_state()
{
    Facts facts;
    add_daemon(facts);
    add_passwd(facts);
    add_sessions(facts);
    add_events(facts);
    if (const auto owner_file = device::text_of(device::OWNER_FILE)) {
        facts[{"owner file", ""}] = as_characters(*owner_file);
    }
    if (std::filesystem::exists(device::UPGRADE_FLAG)) {
        facts[{"flag", ".sso_upgraded"}] = true;
    }
    return facts;
}
