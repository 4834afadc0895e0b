/** Where in a command's course its statements were made. */
#pragma once

#include "devkit/recording/recording.h"

/**
 * For each statement how many of the command's calls had been made when it was: a statement of a
 * unit that makes a request stands at the next of its kind, one about an account that it names
 * before others; each statement once at a call, and none before the one ahead of it in the log.
 */
std::vector<std::size_t> places_of(const RecordedCommand& command);
