/** What differs between two lists of lines. */
#pragma once

#include <string>
#include <vector>

/**
 * The difference in unified format, with three lines around each change; empty when there is none.
 *
 * @param old_name, new_name  stand in the two header lines
 */
std::vector<std::string> unified_diff(
    const std::vector<std::string>& old_lines,
    const std::vector<std::string>& new_lines,
    const std::string& old_name,
    const std::string& new_name
);
