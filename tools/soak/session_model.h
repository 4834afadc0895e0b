/** Local sessions, as the contract has them. */
#pragma once

#include "tools/soak/fate.h"
#include "tools/soak/state.h"
#include "tools/soak/world.h"

/** Removes what is older than a day, and unpins before that what is this owner's. */
void sweep_sessions(
    State& state, const World& world, Fate& fate, const std::optional<std::string>& unpinned_owner
);

void record_session(
    State& state,
    const World& world,
    Fate& fate,
    const std::string& token,
    const std::string& user,
    bool pinned
);
