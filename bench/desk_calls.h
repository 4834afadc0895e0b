/**
 * The plug-in's calls out of itself, timed on their way: the program's definitions of them come
 * before the libraries' own, to which they hand on.
 */
#pragma once

#include <array>

enum class Calls {
    LookUps,      // of accounts and groups
    Transactions, // with the daemon, there and back
    Journal,
    LogFile,
    Tools, // of the device, from their start to their end
    Count
};

/** Microseconds of the wall clock, each in its kind. */
using CallTimes = std::array<double, static_cast<std::size_t>(Calls::Count)>;

/** The times since it was last asked. */
CallTimes takeCallTimes();
