/** Has a plug-in carry out one harmless command, in a process of its own. */
#pragma once

#include "devkit/broker/check/profile.h"
#include "devkit/broker/check/row.h"

/**
 * Loads the library in a child process that can change nothing, and has it refuse an unknown
 * operation. For another machine than the broker's qemu-arm runs the child; where that cannot be,
 * the row says so and has no finding.
 */
Row trial_row(const std::string& library, const Profile& profile);

/** The row in its place where the library cannot be loaded. */
Row no_trial_row();
