/** One transaction, from the request's text to the reply's. */
#pragma once

#include "devkit/boxwelld/store.h"

#include <optional>
#include <string>

/** Carries out the request, whole or not at all; whatever hinders it becomes a refusal. */
std::string carry_out(Store& store, const std::string& text);

/** Refuses the request without looking at what it asks for. */
std::string refuse(const std::string& text, const std::optional<std::string>& detail);
