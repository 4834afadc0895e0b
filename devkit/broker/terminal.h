/** What standard output is written to. */
#pragma once

#include <cstddef>

/** The terminal's columns; 0, no limit, where standard output is none. */
std::size_t terminal_width();

/** Whether to use colours: on a terminal, unless NO_COLOR is set to a text (https://no-color.org).
 */
bool colours_wanted();
