/**
 * The log: to the system journal and to the broker's log file. docs/log.md lists every statement.
 *
 * Of these the plug-in exports MAX_LOG_LEVEL; the rest comes from libsyscmd-common.a, whose copy of
 * MAX_LOG_LEVEL is the including plug-in's own: set it as `execute` does.
 */
#pragma once

#include "liblst/export.h"

/** The journal's threshold on the syslog scale: a statement reaches the journal when its priority
 * is not greater. `execute` sets it from the transaction at every call; 3 until then. */
EXPORTED extern int MAX_LOG_LEVEL;

/** Level of a log statement; the values are the journal's priorities (syslog(3)). */
enum class LogLevel {
    Error = 3,
    Info = 6,
    Debug = 7,
};

/**
 * One log statement: to the system journal where MAX_LOG_LEVEL admits it, and, whatever the level,
 * appended to the broker's log file where that file exists. It is called through LOG and LOG_AT.
 *
 * The journal takes one entry a line, the location in front of the first; text behind the last line
 * end is not sent. The file takes the text as one piece. errno is preserved. A statement for which
 * memory runs out is dropped whole.
 *
 * @param level     the statement's level
 * @param file      base name of the source file
 * @param line      source line by which support staff know the statement
 * @param function  name of the function
 * @param format    a printf format, and its arguments
 */
[[gnu::__format__(__printf__, 5, 6)]] void logStatement(
    LogLevel level, const char* file, int line, const char* function, const char* format, ...
);

/** Who speaks in a statement, where a helper speaks for its operation: SPEAKER("GetUserData"). */
struct Speaker {
    const char* file;     /**< base name of the source file */
    const char* function; /**< name of the function */
};
#define SPEAKER(function) (Speaker{__FILE_NAME__, (function)})

/** A speaker's log statement that support staff know by its line. */
#define LOG_AS_AT(speaker, line, level, ...)                                                       \
    logStatement(LogLevel::level, (speaker).file, (line), (speaker).function, __VA_ARGS__)

/** A speaker's log statement at its own line. */
#define LOG_AS(speaker, level, ...) LOG_AS_AT(speaker, __LINE__, level, __VA_ARGS__)

/** A log statement that support staff know by its line: `LOG_AT(1651, Error, "…\n")`. */
#define LOG_AT(line, level, ...) LOG_AS_AT(SPEAKER(__func__), line, level, __VA_ARGS__)

/** A log statement at its own line: `LOG(Error, "…\n")`. */
#define LOG(level, ...) LOG_AT(__LINE__, level, __VA_ARGS__)

/** What a routine says, by its own name, of an argument that is null. */
#define LOG_INVALID_INPUT(line)                                                                    \
    LOG_AT(line, Error, "ERROR [syscmd:%s]: invalid input arguments\n", __func__)
