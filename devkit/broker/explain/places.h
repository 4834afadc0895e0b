/** Which operation a statement is of, and where in it. */
#pragma once

#include "devkit/broker/explain/statement.h"

#include <array>
#include <optional>
#include <string_view>

inline constexpr std::array<std::string_view, 7> OPERATIONS = {
    "adduser",    "addremoteuser",    "deleteuser",       "updateuser",
    "unregister", "upgradeusertosso", "initlocalsession",
};

/** How far a command has come when a statement is made: statements of one never go back. */
enum Phase : int {
    ANYWHERE = -1, // no phase of its own
    REQUESTED = 0,
    BEGUN = 1,
    ENDED = 9,
};

/** The phase of an operation that a statement belongs to; nothing: the operation has no such one.
 */
std::optional<int> phase_in(std::string_view operation, const StatementRow& row);

/** Whether a command may say it more than once. */
bool may_repeat(const StatementRow& row);

/** What a command's last statement tells. */
enum class End {
    Open, // it is not a last one
    Succeeded,
    Failed,
    Refused, // no such operation, or not for this requester
    Denied,  // neither owner nor member
};

End end_by(const StatementRow& row);

/** Whether a statement tells who asks, as the first of a command. */
bool tells_who_asks(const StatementRow& row);
