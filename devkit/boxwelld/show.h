#pragma once

#include "devkit/boxwelld/store.h"

#include <string>

/** The whole state for people, or as the JSON that seed.h describes. */
std::string show(Store& store, bool json);
