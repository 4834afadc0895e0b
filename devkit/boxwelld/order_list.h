#pragma once

#include "devkit/boxwelld/store.h"

#include <string>

/**
 * The orders that wait and what each waits for, a line each for people, or as one JSON object:
 * {"orders": [{"kind", "text", "skip", "count"}]}, count 0 meaning all.
 */
std::string order_list(Store& store, bool json);
