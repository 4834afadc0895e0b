#pragma once

#include "devkit/boxwelld/store.h"

#include <string>

/**
 * The orders that wait and what each waits for, a line each for people, or as one JSON object:
 * {"orders": [{"kind", "text", "for", "skip", "count"}]}, an empty `for`
 * meaning any request and a count of 0 all.
 */
std::string order_list(Store& store, bool json);
