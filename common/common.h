/**
 * What every plug-in of the broker shares: the transaction interface with its result codes, the
 * owner file, the upgrade flag, and small helpers for names and lines.
 *
 * Conventions:
 *  - A `char**` argument receives a newly allocated NUL-terminated string, which the caller
 *    releases with free(); it is set only on success.
 *  - Nothing here is exported by the plug-in: it comes from libsyscmd-common.a.
 *  - A null pointer where none is allowed is refused with the failure value, never dereferenced.
 *  - Nothing here throws but what std::string throws when memory runs out.
 */
#pragma once

#include "common/account_name.h"
#include "common/base64.h"
#include "common/device/device_info.h"
#include "common/device/owner_file.h"
#include "common/device/upgrade_flag.h"
#include "common/error_text.h"
#include "common/random_name.h"
#include "common/readline.h"
#include "common/result.h"
#include "common/transaction.h"
#include "common/whole_file.h"
