/**
 * liblst: lists of strings, maps, string editing, files, shell commands, configuration and lock
 * files. C functions over NUL-terminated strings, for C and C++.
 *
 * Conventions, for every function unless its own text says otherwise:
 *
 * 1. Ownership. Whatever a function returns newly allocated, as its value or through an
 *    out-argument, the caller releases: a string with free(), a list or map with lstFree(), a
 *    collection with pClean(). Names that begin with `pt` return such a string. Arguments stay the
 *    caller's; what is stored is a copy. A pointer to const characters points into something else
 *    and is not released.
 * 2. Failures show as -1, or as null where a pointer is returned, with the reason in errno; nothing
 *    is logged or thrown. Memory that runs out is ENOMEM. A function that changes the caller's
 * list, map, string or collection leaves it as it was when it fails, and an out-argument is only
 * set on success.
 * 3. Null arguments. A null pointer where one is required is refused with EINVAL before anything
 *    is done. A null list, map or collection is an empty one wherever it says so.
 * 4. Formats are those of printf, checked by the compiler. Functions whose names end in `Format`
 *    format a path, command or text of any length and release it before they return.
 * 5. Threads. Functions work on their arguments only and may run at once on different data;
 *    readFileRow() and ptGetFileRowFormat() share one buffer in the process and may not. Locks are
 *    between processes.
 * 6. White space and character order are the C library's, in the process's locale.
 */
#pragma once

#include <stddef.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Argument number `text` is a printf format, what it formats begins with number `first`. */
#define LIBLST_PRINTF(text, first) __attribute__((format(printf, text, first)))

/* ---- Strings ------------------------------------------------------------------------------- */

/**
 * Cuts out what stands between two marks: the text after the first `begin` up to, not including,
 * the first `end` that follows it.
 *
 * An empty `end`, or one that does not follow, makes the copy run to the end of `string`. A
 * `begin` that does not occur gives a newly allocated empty string, not null: a missing element is
 * an empty text.
 *
 * @return the copy, to be freed; null with EINVAL or ENOMEM only
 */
char* ptCutStr(const char* string, const char* begin, const char* end);

/**
 * Formats into a new string of exactly the length that is needed.
 *
 * @return the string, to be freed; null when `format` is null (EINVAL), when it cannot be formatted
 *         (the reason of vsnprintf) or when memory runs out
 */
char* String(const char* format, ...) LIBLST_PRINTF(1, 2);

/* ---- Whole files --------------------------------------------------------------------------- */

/**
 * Reads the file at the formatted path whole.
 *
 * @param content  receives the content, to be freed; set to null when the file was read but could
 *                 not be closed, untouched by every other failure
 * @return 0; -1 when the file cannot be opened or read, is empty, or cannot be closed
 */
int getFileContentFormat(char** content, const char* format, ...) LIBLST_PRINTF(2, 3);

/* ---- Shell --------------------------------------------------------------------------------- */

/**
 * Runs the formatted command through the shell, as system(3) does.
 *
 * @return the status as system(3) reports it; -1 for a null format or exhausted memory too
 */
int executeShellFormat(const char* format, ...) LIBLST_PRINTF(1, 2);

#ifdef __cplusplus
}
#endif
