/** The floors of the operations, for commands that succeed. */
#pragma once

#include "common/common.h"

/** Carries out a command as execute() does, by the least calls. */
void bareExecute(ITransaction& transaction);

/** The same, and what the requester's check read of the owner file serves the whole command. */
void bareExecuteReadingOnce(ITransaction& transaction);
