/** The seeded mix of commands. */
#pragma once

#include "devkit/broker/command.h"
#include "tools/soak/random.h"
#include "tools/soak/state.h"

/** A command as a cloud might ask it, or somebody who means harm, in this state. */
Command drawn_command(Random& random, const State& state);

/** The command in one line. */
std::string shown(const Command& command);
