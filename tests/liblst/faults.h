/** Calls of the C library that the units make, failing on order. */
#pragma once

/** Lets that many allocations pass and has the next one fail; counts below zero afterwards. */
extern int allocations_left;
/** The name of the call that fails: "close" or "lockf64"; null for none. */
extern const char* failing_call;
