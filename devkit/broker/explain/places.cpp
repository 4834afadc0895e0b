#include "devkit/broker/explain/places.h"

#include "devkit/broker/explain/table.h"

#include <algorithm>

namespace {

constexpr std::string_view ALL = "*";

/** Where a function speaks. Handlers are not listed: they begin and end their operation. */
constexpr struct {
    std::string_view function;
    std::string_view operations;
    int phase;
} PLACES[] = {
    {"execute", ALL, ANYWHERE},
    {"AuthenticateUser", ALL, REQUESTED},
    {"checkParameters", ALL, BEGUN},
    {"SendMXLtoBWD", ALL, ANYWHERE},
    {"GetMXLStatus", ALL, ANYWHERE},
    {"GetMXLErrorDetail", ALL, ANYWHERE},
    {"GetUserIDByUsername", ALL, ANYWHERE},
    {"GetUserData", "adduser deleteuser updateuser", 2},
    {"resolveLocalUserConflicts", "updateuser", 2},
    {"renameLocalUserIfExists", "updateuser", 2},
    {"DelNetwork", "adduser deleteuser", 3},
    {"DelUser", "adduser deleteuser", 4}, // that it failed; else the other speaks
    {"AddUser", "adduser", 5},
    {"AddNetwork", "addremoteuser", 5},
    {"Unregister", "unregister", 5},
    {"UpgradeUserToSSO", "upgradeusertosso", 6},
    {"CleanupObsoleteLocalSessions", "initlocalsession", 2},
    {"UpdateLocalSessionRecords", "initlocalsession", 3},
};

constexpr struct {
    std::string_view function;
    std::string_view operation;
} HANDLERS[] = {
    {"AddAccountHandler", "adduser"},
    {"AddRemoteUserHandler", "addremoteuser"},
    {"DeleteAccountHandler", "deleteuser"},
    {"UpdateUserHandler", "updateuser"},
    {"UnregisterHandler", "unregister"},
    {"UpgradeUserToSSOHandler", "upgradeusertosso"},
    {"InitLocalSessionHandler", "initlocalsession"},
};

bool says(const StatementRow& row, std::string_view text)
{
    return row.format.find(text) != std::string_view::npos;
}

/** Whether an update is the account's own, behind those of accounts that were in its way. */
bool is_main_update(const StatementRow& row)
{
    return row.function == "UpdateUser" && says(row, "group=");
}

/** An update may be of an account in the way, of the account itself or of one that is upgraded. */
std::optional<int> phase_of_update(std::string_view operation, const StatementRow& row)
{
    constexpr int MAIN_UPDATE = 3;
    if (operation != "updateuser" && operation != "upgradeusertosso") {
        return {};
    }
    return is_main_update(row) ? MAIN_UPDATE : ANYWHERE;
}

} // namespace

std::optional<int> phase_in(std::string_view operation, const StatementRow& row)
{
    if (row.function == "UpdateUser") {
        return phase_of_update(operation, row);
    }
    for (const auto& handler : HANDLERS) {
        if (handler.function == row.function) {
            const int phase = end_by(row) == End::Open ? BEGUN : ENDED;
            return handler.operation == operation ? std::optional(phase) : std::nullopt;
        }
    }
    for (const auto& place : PLACES) {
        if (place.function == row.function) {
            const Cells operations = pieces_between(place.operations, " ");
            const bool has =
                place.operations == ALL ||
                std::find(operations.begin(), operations.end(), operation) != operations.end();
            return has ? std::optional(place.phase) : std::nullopt;
        }
    }
    return {};
}

bool may_repeat(const StatementRow& row)
{
    constexpr std::string_view REPEATED[] = {
        "GetUserData", "UpdateUser", "renameLocalUserIfExists", "CleanupObsoleteLocalSessions"};
    return !is_main_update(row) &&
           std::find(std::begin(REPEATED), std::end(REPEATED), row.function) != std::end(REPEATED);
}

End end_by(const StatementRow& row)
{
    if (row.function == "execute") {
        return says(row, "unknown operation") ? End::Refused : End::Failed;
    }
    if (row.function == "AuthenticateUser" && row.is_error()) {
        return says(row, "DENIED") ? End::Denied : End::Failed;
    }
    if (!row.function.ends_with("Handler")) {
        return End::Open;
    }
    if (row.is_error()) {
        return End::Failed;
    }
    return says(row, "success") || says(row, "SUCCESS") ? End::Succeeded : End::Open;
}

bool tells_who_asks(const StatementRow& row)
{
    return says(row, "ACCESS REQUESTED");
}
