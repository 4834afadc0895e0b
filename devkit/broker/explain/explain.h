/** `broker explain`: what a log tells, command by command. */
#pragma once

#include "devkit/broker/command.h"

/**
 * Reads the log to its end, or goes on until a signal, and prints what it explains.
 *
 * @return whether any statement of the plug-in was there; true whenever a log was followed
 * @throws BadUse  when it cannot be read
 */
bool explain_log(const ExplainOptions& options);
