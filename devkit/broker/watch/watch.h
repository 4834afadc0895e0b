/** `broker watch`: each command as it happens. */
#pragma once

#include "devkit/recording/recording.h"

#include <string>

/**
 * Prints each command that brokers carry out on the device from now on, until SIGINT or SIGTERM.
 *
 * @param json  whether to print a recording instead, line by line as it comes
 * @throws BadUse  when the device cannot be watched
 */
void watch_device(bool json);

/**
 * A command for people: when and who, its transactions with the statements at them, changes,
 * answer; an empty line behind it.
 */
std::string block_of(const RecordedCommand& command);
