/** What the models of the soak and the fuzzer, and the desk, read out of a text, as literally as
 * can be. */
#pragma once

#include <string>

/** The text behind the first `begin`, up to the next `end` or else to its end; nothing without
 * `begin`. */
inline std::string
between(const std::string& text, const std::string& begin, const std::string& end)
{
    const std::size_t from = text.find(begin);
    if (from == std::string::npos) {
        return "";
    }
    const std::string rest = text.substr(from + begin.size());
    return rest.substr(0, rest.find(end));
}
