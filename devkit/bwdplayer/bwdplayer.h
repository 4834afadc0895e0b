/**
 * A client library that a program in its own process answers for: loaded with RTLD_GLOBAL in front
 * of a plug-in, it takes the daemon's place.
 */
#pragma once

#include "liblst/export.h"

extern "C" {
/** As process_request_bwdclient (common/mxl/bwdclient.h). */
using BwdAnswer = int(char* request, int request_length, char** reply, int* reply_length);

/** Who answers; the symbol by which a program finds it. Null: calls fail with ENOSYS. */
EXPORTED extern BwdAnswer* bwdplayer_answer;
}
