/** Where in a command's course its statements were made. */
#pragma once

#include "devkit/recording/recording.h"

/**
 * For each statement how many of the command's calls had been made when it was: a statement of a
 * unit that makes a request stands at the next of its kind, and no statement before the one ahead
 * of it in the log.
 */
std::vector<std::size_t> places_of(const RecordedCommand& command);
