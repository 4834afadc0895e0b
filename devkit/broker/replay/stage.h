/** The private device, set to a recorded state. */
#pragma once

#include "devkit/recording/facts.h"

/**
 * Gives the device this state: the daemon's accounts, and with them passwd and group, owner file,
 * flag and sessions; there are no events. Pins are set where that is allowed.
 *
 * @throws std::runtime_error  when the daemon refuses the state, or a file cannot be written
 */
void set_stage(const Facts& facts);
