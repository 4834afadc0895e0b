/**
 * What every plug-in of the broker shares to speak: the log facility, and the exchange of
 * transactions (MXL) with the management daemon boxwelld.
 *
 * Conventions:
 *  - The plug-in exports MAX_LOG_LEVEL; all else comes from libsyscmd-common.a.
 *  - Requests and replies are NUL-terminated UTF-8 texts. Replies are never parsed as XML, only
 *    cut.
 *  - A `char**` argument receives a newly allocated text, which the caller releases with free(); it
 *    is set only on success.
 *  - Routines return 0 on success and -1 on failure; a null argument is a failure, and is logged.
 *  - Nothing here throws, and nothing keeps state but MAX_LOG_LEVEL.
 */
#pragma once

#include "common/log.h"
#include "common/mxl/reply.h"
#include "common/mxl/transport.h"
