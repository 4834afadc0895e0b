#pragma once

#include "devkit/boxwelld/files.h"

/**
 * Serves one request at a time, as each is whole, until SIGTERM or SIGINT, then removes the socket.
 * A client that neither sends nor reads holds up nobody and is left after `client_timeout_ms`.
 */
void serve(const Paths& paths, int client_timeout_ms);
