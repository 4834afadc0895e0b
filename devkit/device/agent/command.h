/** One command on the device, run for a client. */
#pragma once

#include "devkit/device/agent/talk.h"

/** Variables that every command on the device has with the device's values, whatever the client's
 * are. */
using Own = std::vector<std::string>;

/**
 * Runs the request's command in a session of its own until it ends, passes on the signals that the
 * client sends, and answers with its exit status: 128 + the number of the signal that has killed
 * it. A client that goes hangs up; SIGTERM to this process ends the command, by force after five
 * seconds.
 */
void run_command(Fd client, Request request, const Own& own);
