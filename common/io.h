/**
 * What every plug-in of the broker shares to speak: the log facility, and the exchange of
 * transactions (MXL) with the management daemon boxwelld.
 *
 * Conventions:
 *  - Requests and replies are NUL-terminated UTF-8 texts. Replies are never parsed as XML, only
 * cut.
 *  - A `char**` argument receives a newly allocated text, which the caller releases with free(); it
 *    is set only on success.
 *  - Routines return 0 on success and -1 on failure; a null argument is a failure, and is logged.
 *  - Nothing here throws, and nothing keeps state but MAX_LOG_LEVEL.
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
[[gnu::format(printf, 5, 6)]] void logStatement(
    LogLevel level, const char* file, int line, const char* function, const char* format, ...
);

/** A log statement of the named function, known by a given line: for helpers of an operation, whose
 * statements are the operation's. */
#define LOG_IN(function, line, level, ...)                                                         \
    logStatement(LogLevel::level, __FILE_NAME__, (line), (function), __VA_ARGS__)

/** A log statement that support staff know by its line: `LOG_AT(1651, Error, "…\n")`. */
#define LOG_AT(line, level, ...) LOG_IN(__func__, line, level, __VA_ARGS__)

/** A log statement at its own line: `LOG(Error, "…\n")`. */
#define LOG(level, ...) LOG_AT(__LINE__, level, __VA_ARGS__)

/** What became of one call of the client library. */
enum class Delivery {
    Answered,   /**< the daemon's reply is there */
    Failed,     /**< the call failed */
    Unanswered, /**< the call succeeded, without a reply */
};

/**
 * Hands one request to the daemon and waits for its reply. Logs nothing.
 *
 * @param reply    receives the reply when Answered, else null; the caller releases it with free()
 * @param request  the request; not null
 */
Delivery deliver(char** reply, const char* request);

/**
 * Sends one request and hands back its reply; a failed exchange is the caller's to log.
 *
 * @param respond  receives the reply, which the caller releases with free(); null after a failure
 * @param request  the request
 * @return 0, or -1 when the call failed, brought no reply, or an argument is null (logged)
 */
int SendMXLtoBWD(char** respond, const char* request);

/**
 * Reads the outcome of a transaction: the reply's status, "success" when it was carried out.
 *
 * The `status` attribute must be the last of the `xs:response` start tag; a reply without one gives
 * an empty text.
 *
 * @return 0, or -1 when memory runs out or an argument is null (logged)
 */
int GetMXLStatus(char** status, const char* respond);

/**
 * Reads why the daemon refused a transaction; a reply that does not say gives an empty text.
 *
 * @return 0, or -1 when memory runs out or an argument is null (logged)
 */
int GetMXLErrorDetail(char** error_detail, const char* respond);

/**
 * Copies the text behind the first `begin`, up to the next `end` or else to the end of `string`;
 * an empty text when there is no `begin`.
 *
 * @return 0, or -1 when memory runs out or an argument is null
 */
int CutStr(char** result, const char* string, const char* begin, const char* end);
