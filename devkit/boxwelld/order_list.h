#pragma once

#include "devkit/boxwelld/store.h"

#include <string>

/**
 * The orders that wait, what each waits for, and the next ten faults of the plan among the next
 * thousand requests; for people, or as one JSON object:
 *
 *   {"orders": [{"kind", "text", "for", "skip", "count"}],
 *    "chaos": null or {"seed", "rate", "kinds": [...], "count", "come",
 *                      "faults": [{"request", "kind", "text"}]}}
 *
 * An empty `for` means any request, a count of 0 all; `come` is how many requests the plan has
 * seen.
 */
std::string order_list(Store& store, bool json);
