/** The model: what a command is to answer, and what it is to leave, written from the contract. */
#pragma once

#include "common/common.h"
#include "devkit/broker/command.h"
#include "tools/soak/fate.h"
#include "tools/soak/state.h"
#include "tools/soak/world.h"

struct Expected {
    TTransactionCode code = CODE_FAILED;
    std::string response;

    bool operator==(const Expected&) const = default;
};

/** Carries out the command on `state` and `world`; `fate` decides what is open. */
Expected carry_out(const Command& command, State& state, World& world, Fate& fate);

/** The owner file's text. */
std::string owner_text(const World& world, const std::string& owner, const std::string& p2p_owner);

/** The part of a name that the device looks at. */
std::string head(const std::string& name);
