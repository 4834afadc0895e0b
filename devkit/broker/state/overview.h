/** What a device's state comes to: who may do what, and what does not agree. */
#pragma once

#include "devkit/broker/state/device_state.h"

/** What the plug-in takes a requester of an account's name for. */
enum class Role {
    Owner,
    Member,
    LockedMember,
    Stranger
};

/** An account as daemon and system have it, at least one of them. */
struct AccountView {
    std::string name;
    std::optional<DaemonAccount> daemon;
    std::optional<SystemAccount> system;
    Role role = Role::Stranger;
    std::vector<std::string> differences; // a sentence's end each: "is not in the system"
};

struct Overview {
    std::vector<AccountView> accounts; // by the daemon's id, those of the system alone behind them
    std::vector<std::string> remarks;  // what else does not agree, a sentence each
};

Overview overview_of(const DeviceState& state);

/** Whether everything agrees. */
bool all_agrees(const Overview& overview);

/** "owner", "member", "locked member", "stranger". */
const char* role_name(Role role);
