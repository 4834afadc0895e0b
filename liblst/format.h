/** Formatting into owned strings, for every function that takes a printf format. */
#pragma once

#include <cstdarg>

/**
 * Formats into a newly allocated string, sized exactly.
 *
 * @param format     the printf format; null is refused with EINVAL
 * @param arguments  what it formats; used up as by vsnprintf
 * @return the text, which the caller releases with free(), or null with errno set
 */
__attribute__((__format__(__printf__, 1, 0))) char*
formatText(const char* format, va_list arguments);

/** Inside a variadic function: sets `text` to its arguments after `format`, formatted. */
#define FORMAT_ARGUMENTS(text, format)                                                             \
    do {                                                                                           \
        va_list arguments;                                                                         \
        va_start(arguments, format);                                                               \
        (text) = formatText(format, arguments);                                                    \
        va_end(arguments);                                                                         \
    } while (false)
