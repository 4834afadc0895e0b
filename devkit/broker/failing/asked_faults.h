/** Faults that are asked for by words. */
#pragma once

#include "tools/failing_calls/faults.h"

#include <string>

/**
 * Reads CALL:N[:ERRNO]: the N-th call of CALL, from 1 on, fails with ERRNO, a name or number of
 * errno, or else with the first that its kind has. CALL is a kind of calls, which are counted
 * together, or one of the calls in it. A read or write can be HALF done, and a look-up find NOBODY.
 *
 * @throw BadUse  with what there is
 */
Fault parse_fault(const std::string& text);
