/** A device's state in words for people or as JSON. */
#pragma once

#include "devkit/broker/state/overview.h"

#include <nlohmann/json.hpp>
#include <string>

/** @param width  the terminal's columns; 0: no limit */
std::string
for_people(const DeviceState& state, const Overview& overview, std::size_t width, bool colours);

/**
 * {"owner_file": {"owner", "p2p_owner"} or null, "cloud_owner": name or null, "upgraded",
 * "daemon_answers", "accounts": [{"name", "role", "daemon": {...} or null, "system": {...} or null,
 * "differences": [...]}], "remote_users": [...], "sessions": [{"token", "user", "age": seconds,
 * "expired", "pinned", "shared_memory"}], "information": {...}, "remarks": [...]}
 */
nlohmann::ordered_json as_json(const DeviceState& state, const Overview& overview);
