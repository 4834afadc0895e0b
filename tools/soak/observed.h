/** What is found on the device. */
#pragma once

#include "devkit/boxwelld/store.h"
#include "tools/soak/state.h"
#include "tools/soak/world.h"

/** The device's information, groups and foreign accounts, and whether records can be pinned. */
World explored_world(Store& store);

/** The state; records written since the last call are dated `now`, as the plug-in's clock is. */
State observed_state(Store& store, time_t now);

/** What of passwd and group is not as the state has it; empty: nothing. */
std::string wrong_account_files(const State& state, const World& world);

/** The number of the device's files but those that the state is about. */
std::size_t lasting_files();

/** Open descriptors and resident KiB of a process ("self", or its number). */
std::size_t descriptors(const std::string& process);
std::size_t resident(const std::string& process);

inline const Paths PATHS{.socket = "/run/boxwelld.sock"};
inline constexpr char OWNER_FILE_PATH[] = "/opt/skyhold/etc/registration.conf";
inline constexpr char UPGRADE_FLAG_PATH[] = "/opt/skyhold/etc/.sso_upgraded";
inline constexpr char LOG_FILE_PATH[] = "/var/log/shbroker.log";
inline constexpr char SERIAL_PATH[] = "/var/lib/device/info/Serial";
