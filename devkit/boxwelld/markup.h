#pragma once

#include <string>

/** `text` for people: a line for each element, indented; any text is taken, markup or not. */
std::string broken_at_tags(const std::string& text);
