/** What the broker's programs print to, and end with. */
#pragma once

#include <cstdio>
#include <string>

constexpr int EXIT_CARRIED_OUT = 0;
constexpr int EXIT_NOT_CARRIED_OUT = 1;
constexpr int EXIT_BAD_USE = 2;

inline void print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

inline int exit_status(bool all_carried_out)
{
    return all_carried_out ? EXIT_CARRIED_OUT : EXIT_NOT_CARRIED_OUT;
}
