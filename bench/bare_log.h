/** The floor of a log statement: the same effects by the least calls. */
#pragma once

#include "common/io.h"

inline constexpr const char* LOG_FILE = "/var/log/shbroker.log";

/** Makes the log file, empty, or removes it, and sets the level. */
void setLog(int level, bool file);

/**
 * A statement as logStatement() makes it: one journal entry a line where the level is admitted, one
 * write where the log file exists. Messages of up to 64 KiB.
 */
[[gnu::format(printf, 5, 6)]] void bareStatement(
    LogLevel level, const char* file, int line, const char* function, const char* format, ...
);

/** A statement of one line at DEBUG, as operations make most of them. */
#define BARE_DEBUG(...)                                                                            \
    bareStatement(LogLevel::Debug, __FILE_NAME__, __LINE__, __func__, __VA_ARGS__)
#define BARE_INFO(...) bareStatement(LogLevel::Info, __FILE_NAME__, __LINE__, __func__, __VA_ARGS__)
