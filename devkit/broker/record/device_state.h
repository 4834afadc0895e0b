/** The device's state as a recording tells it: what an operation may change. */
#pragma once

#include "devkit/recording/facts.h"

/** The events that the device's tool was given, a JSON array a line. */
constexpr char EVENTS_FILE[] = "/var/lib/device/events.jsonl";

/**
 * Reads the state of the private device on which this runs: the daemon's accounts, remote users and
 * owner, lines of passwd, owner file, upgrade flag, sessions and events. What cannot be read is not
 * among the facts.
 */
Facts device_state();
