#include "devkit/broker/state/show.h"

#include "devkit/broker/device.h"
#include "devkit/broker/table.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t MINUTE = 60;
constexpr std::int64_t HOUR = 60 * MINUTE;
constexpr std::int64_t DAY = 24 * HOUR;

bool expired(const SessionRecord& session)
{
    return session.age > device::SESSION_SECONDS;
}

/** In its two largest units. */
std::string duration(std::int64_t seconds)
{
    const auto two = [](std::int64_t large, const char* one, std::int64_t small,
                        const char* other) {
        return std::to_string(large) + one +
               (small != 0 ? ' ' + std::to_string(small) + other : "");
    };
    if (seconds < MINUTE) {
        return std::to_string(seconds) + " s";
    }
    if (seconds < HOUR) {
        return std::to_string(seconds / MINUTE) + " min";
    }
    return seconds < DAY ? two(seconds / HOUR, " h", seconds % HOUR / MINUTE, " min")
                         : two(seconds / DAY, " d", seconds % DAY / HOUR, " h");
}

std::string joined(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : ", ") + text;
    }
    return all;
}

TableRow row(std::vector<std::string> cells, Style style = Style::Plain)
{
    for (std::string& cell : cells) {
        cell = printable(cell);
    }
    return {std::move(cells), style};
}

std::vector<TableRow> device_rows(const DeviceState& state)
{
    const auto& file = state.owner_file;
    std::vector<TableRow> rows = {
        row({"owner", file ? file->owner : "(no owner file)"}),
        row({"remote access as", file ? file->p2p_owner : ""}),
        row({"in the cloud", state.cloud_owner.empty() ? "(nobody)" : state.cloud_owner}),
        row({"single sign-on", state.upgraded ? "upgraded" : "not upgraded"}),
    };
    for (const auto& [key, value] : state.information) {
        rows.push_back(row({key, value}));
    }
    return rows;
}

std::vector<TableRow> account_rows(const Overview& overview)
{
    std::vector<TableRow> rows = {
        row({"NAME", "DAEMON", "SYSTEM", "STATE", "ROLE", "E-MAIL", "REMOTE ACCESS"},
            Style::Heading)};
    for (const AccountView& account : overview.accounts) {
        const auto& daemon = account.daemon;
        const auto& system = account.system;
        rows.push_back(
            row({account.name, daemon ? std::to_string(daemon->id) + ' ' + daemon->group : "-",
                 system ? std::to_string(system->id) + ' ' + system->group : "-",
                 !daemon          ? "-"
                 : daemon->locked ? "locked"
                                  : "unlocked",
                 role_name(account.role), daemon ? daemon->email : "",
                 daemon ? daemon->p2p_user_name : ""},
                account.differences.empty() ? Style::Plain : Style::Warning)
        );
    }
    return rows;
}

std::vector<TableRow> session_rows(const DeviceState& state)
{
    std::vector<TableRow> rows = {row({"TOKEN", "USER", "AGE", "STATE"}, Style::Heading)};
    for (const SessionRecord& session : state.sessions) {
        std::vector<std::string> states;
        if (session.pinned) {
            states.emplace_back("pinned");
        }
        if (expired(session)) {
            states.emplace_back("expired");
        }
        if (session.shared_memory) {
            states.emplace_back("shared memory");
        }
        rows.push_back(row({session.token, session.user, duration(session.age), joined(states)}));
    }
    return rows;
}

std::vector<TableRow> remark_rows(const Overview& overview)
{
    std::vector<TableRow> rows;
    for (const AccountView& account : overview.accounts) {
        for (const std::string& difference : account.differences) {
            rows.push_back(row({"!!", account.name + ' ' + difference + '.'}, Style::Warning));
        }
    }
    for (const std::string& remark : overview.remarks) {
        rows.push_back(row({"!!", remark}, Style::Warning));
    }
    return rows;
}

Json account_json(const AccountView& account)
{
    const auto& daemon = account.daemon;
    const auto& system = account.system;
    return {
        {"name", account.name},
        {"role", role_name(account.role)},
        {"daemon", daemon ? Json{{"id", daemon->id},
                                 {"group", daemon->group},
                                 {"locked", daemon->locked},
                                 {"email", daemon->email},
                                 {"p2p_user_name", daemon->p2p_user_name},
                                 {"member_of", daemon->member_of}}
                          : Json()},
        {"system",
         system ? Json{{"id", system->id}, {"group", system->group}, {"member_of", system->member_of}}
                : Json()},
        {"differences", account.differences},
    };
}

} // namespace

std::string
for_people(const DeviceState& state, const Overview& overview, std::size_t width, bool colours)
{
    std::string text;
    const auto section = [&](const char* title, const std::vector<TableRow>& rows) {
        text += (text.empty() ? "" : "\n") + styled(title, Style::Heading, colours) + '\n';
        text += table(rows, width, colours);
    };
    section("device", device_rows(state));
    section("accounts", account_rows(overview));
    if (!state.remote_users.empty()) {
        std::vector<TableRow> rows;
        for (const std::string& name : state.remote_users) {
            rows.push_back(row({name}));
        }
        section("remote users", rows);
    }
    if (!state.sessions.empty()) {
        section("sessions", session_rows(state));
    }
    if (!all_agrees(overview)) {
        section("what does not agree", remark_rows(overview));
    }
    return text;
}

Json as_json(const DeviceState& state, const Overview& overview)
{
    const auto& file = state.owner_file;
    Json document = {
        {"owner_file",
         file ? Json{{"owner", file->owner}, {"p2p_owner", file->p2p_owner}} : Json()},
        {"cloud_owner", state.cloud_owner.empty() ? Json() : Json(state.cloud_owner)},
        {"upgraded", state.upgraded},
        {"daemon_answers", state.daemon_answers},
        {"accounts", Json::array()},
        {"remote_users", state.remote_users},
        {"sessions", Json::array()},
        {"information", Json::object()},
        {"remarks", overview.remarks},
    };
    for (const AccountView& account : overview.accounts) {
        document["accounts"].push_back(account_json(account));
    }
    for (const SessionRecord& session : state.sessions) {
        document["sessions"].push_back(
            {{"token", session.token},
             {"user", session.user},
             {"age", session.age},
             {"expired", expired(session)},
             {"pinned", session.pinned},
             {"shared_memory", session.shared_memory}}
        );
    }
    for (const auto& [key, value] : state.information) {
        document["information"][key] = value;
    }
    return document;
}
