/** The floors of the operations as the plug-in is built: a library of their own. */
#pragma once

#include "common/common.h"
#include "liblst/export.h"

/** bareExecute(). */
EXPORTED void floorExecute(ITransaction& transaction);
