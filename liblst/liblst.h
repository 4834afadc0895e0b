/**
 * liblst: lists of strings, maps, string editing, files, shell commands, configuration and lock
 * files. C functions over NUL-terminated strings, for C and C++.
 *
 * The plug-in exports every function here; liblst.a has the same, and needs the C library only.
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
 *    list, map, string or collection leaves it as it was when it fails, and an out-argument is only
 *    set on success.
 * 3. Null arguments. A null pointer where one is required is refused with EINVAL before anything
 *    is done. A null list, map or collection is an empty one wherever it says so.
 * 4. Formats are those of printf, checked by the compiler. Functions whose names end in `Format`
 *    format a path, command or text of any length and release it before they return. What is read
 *    has no length beside its NUL: what follows a NUL in a file or an output is there, and lost to
 *    every function that takes the text.
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
#define LIBLST_PRINTF(text, first) __attribute__((__format__(__printf__, text, first)))

/* ---- Lists ---------------------------------------------------------------------------------
 * A null-terminated array of strings, which it owns. A null pointer is the empty list.
 */

/**
 * Appends a copy of `str` to `*lst`, creating the list when `*lst` is null. The array is
 * reallocated on every push, to exactly the pointers it needs.
 *
 * @return the index of the new element, or -1
 */
ssize_t lstPush(char*** lst, const char* str);

/** The number of elements; 0 for a null list. Counts them. */
size_t lstSize(char** lst);

/** Releases every element and the array; `lst` may be null. */
void lstFree(char** lst);

/**
 * Splits `s` at every `splitter` into its non-empty fields, in order: splitters in a row, in front
 * and at the end make no empty fields.
 *
 * @return a new list; null, without an error, when there is no field
 */
char** lstSplitStr(const char splitter, const char* s);

/**
 * Picks the elements in which the POSIX extended regular expression `regexp` matches anywhere. The
 * expression is compiled for every element anew, so an empty list accepts any. A list of lstPush()
 * must be cast, since its strings may be written to: `lstEgrep((const char**)list, "^a")`.
 *
 * @return a new list of copies; null, without an error, when none matches; null with EINVAL for an
 *         expression that does not compile and for a null list
 */
char** lstEgrep(const char** lst, const char* regexp);

/**
 * Lists the names in a directory in the order in which it yields them, without "." and "..".
 *
 * @return a new list; null, without an error, for an empty directory; null with the reason of
 *         opendir(3) or readdir(3) when it cannot be read
 */
char** lstReadDir(const char* path);

/* ---- Maps ----------------------------------------------------------------------------------
 * A list of alternating keys and values, valid while its size is even. Keys may repeat.
 */

/** Appends a copy of the key, then one of the value. Returns the value's index, or -1. */
ssize_t mapPush(char*** map, const char* key, const char* value);

/**
 * Looks a key up; the case of letters counts.
 *
 * @return the value of the first entry with that key, a pointer into the map; null without an error
 *         when there is none, null with EINVAL for a null map or key and a map of odd size
 */
const char* getMapValue(char** map, const char* key);

/**
 * Collects the values of all entries with that key.
 *
 * @return a new list of copies in the map's order; null as by getMapValue()
 */
char** getMapValues(char** map, const char* key);

/* ---- Strings ------------------------------------------------------------------------------- */

/**
 * Replaces every `search` in `string`, from left to right without overlaps. An empty `search`
 * appends `replace` once.
 *
 * @return a new string, or null
 */
char* ptReplaceStr(const char* string, const char* search, const char* replace);

/**
 * Replaces in `*string` as ptReplaceStr() does, by a formatted text; what is formatted may point
 * into `*string`. The old string is released and the new one takes its place.
 *
 * @return 0; -1 with `*string` unchanged
 */
int replaceStrFormat(char** string, const char* search, const char* format, ...)
    LIBLST_PRINTF(3, 4);

/** Removes every line feed and carriage return, wherever they stand, in place. Returns 0 or -1. */
int chopStr(char* s);

/** Removes leading and trailing white space in place. Returns 0 or -1. */
int trimStr(char* s);

/** Removes all white space in place. */
void delGaps(char* str);

/**
 * Cuts out what stands between two marks: the text after the first `begin` up to, not including,
 * the first `end` that follows it.
 *
 * An empty `end`, or one that does not follow, makes the copy run to the end of `string`. A
 * `begin` that does not occur gives a new empty string, not null: a missing element is an empty
 * text.
 *
 * @return a new string; null with EINVAL or ENOMEM only
 */
char* ptCutStr(const char* string, const char* begin, const char* end);

/** Formats into a new string of exactly the length that is needed; null as vsnprintf(3) fails. */
char* String(const char* format, ...) LIBLST_PRINTF(1, 2);

/** A copy of `str`; null, without an error, for null. */
char* Strdup(const char* str);

/* ---- Files ---------------------------------------------------------------------------------
 * Calls that a signal interrupts (EINTR) are made again, with errno restored; but for close(2),
 * which has closed all the same. So are reads of whole files and writes that a non-blocking
 * descriptor refuses (EAGAIN), once it is ready. Descriptors that come in as arguments stay open.
 */

/**
 * Reads a descriptor to its end.
 *
 * @return the content; null, without an error, for an empty input; null with the reason of read(2)
 */
char* ptGetFileContent(const int fn);

/**
 * Reads the file at the formatted path whole.
 *
 * @param content  receives the content; set to null when the file was read but could not be closed
 * @return 0; -1 when the file cannot be opened or read, is empty, or cannot be closed
 */
int getFileContentFormat(char** content, const char* format, ...) LIBLST_PRINTF(2, 3);

/**
 * Writes the formatted text whole, however many writes it takes, and has it stored by fsync(2).
 *
 * @return 0; -1 when a write fails or the descriptor cannot be synchronised, as pipes cannot
 */
int writeToFileFormat(const int fd, const char* format, ...) LIBLST_PRINTF(2, 3);

/* ---- Shell --------------------------------------------------------------------------------- */

/**
 * Runs the formatted command through the shell and collects what it prints on its standard output.
 *
 * @param content  receives the output
 * @return 0, whatever the command's status, which nothing tells; -1 when it cannot be started or
 *         prints nothing
 */
int getShellContentFormat(char** content, const char* format, ...) LIBLST_PRINTF(2, 3);

/**
 * Runs the formatted command as system(3) does.
 *
 * @return the wait status, not the exit status: WIFEXITED() and WEXITSTATUS() of waitpid(2) read
 *         it, and `exit 1` is 256; -1 when the command cannot be started
 */
int executeShellFormat(const char* format, ...) LIBLST_PRINTF(1, 2);

/* ---- Lines ---------------------------------------------------------------------------------
 * What has been read and not yet returned stays pending, in one buffer for the whole process: the
 * next call delivers it first, whatever descriptor it names. Read a file to its end before another.
 */

/**
 * Reads the next line, up to a line feed. Input comes in chunks of up to 512 bytes, each a C
 * string: what follows a NUL in a chunk is lost.
 *
 * - A line that occurs in the pending text again, line feed included, is removed there too, even as
 *   the tail of a longer line: equal lines of one chunk are returned once.
 * - A last line without a line feed is returned and stays pending: every further call returns it
 *   again, and the end is never reported.
 *
 * @param data  receives the line without its carriage returns and line feeds; null when there is
 *              none
 * @param fd    the descriptor; a read that it refuses for now (EAGAIN) is an error
 * @return the line's length plus one; 0 when the input has ended and nothing is pending; -1 when a
 *         read fails, and the pending text is released, or when memory runs out, and it is kept
 */
ssize_t readFileRow(char** data, const int fd);

/** The first line of the file at the formatted path, as readFileRow() reads it; null if none. */
char* ptGetFileRowFormat(const char* format, ...) LIBLST_PRINTF(1, 2);

/* ---- Configuration ------------------------------------------------------------------------- */

/**
 * Reads a configuration file: white space is removed from each line, and a line `key=value` becomes
 * an entry. The key ends at the first "="; a line with an empty key or value, without "=", or that
 * begins with "#" is skipped. Entries keep their order and may repeat. Neither reads nor leaves
 * pending lines.
 *
 * @return a new map; null when the file cannot be read or has no entry
 */
char** readConfig(const char* path);

/**
 * Looks a setting up.
 *
 * @return the first value of `key`, a pointer into the map; `dval`, without an error, when map or
 *         key is null, the map's size odd, or the key absent
 */
const char* getConfigValue(char** map, const char* key, const char* dval);

/* ---- Locks --------------------------------------------------------------------------------- */

/**
 * Waits for the exclusive lock of an existing file, which is held on the lock file "NAME.lock"
 * (created with mode 0600) between processes; one process does not exclude itself.
 *
 * The lock file is removed when a lock is released, also under those who already wait for it: of
 * three processes, one that comes later does not wait for the one that waited.
 *
 * @return a descriptor for ulockF(); -1 when `name` does not exist, its lock file cannot be opened,
 *         or locking fails, an interrupted wait (EINTR) included; then the lock file is removed
 */
int lockF(const char* name);

/**
 * Releases the lock that lockF() returned `fd` for, removes the lock file and closes `fd`.
 *
 * Only after lockF() has succeeded: with -1 the lock file is removed all the same, and it is then
 * another's, who goes on believing that the lock is held.
 */
void ulockF(const char* name, int fd);

/* ---- Collections ---------------------------------------------------------------------------
 * A null-terminated array of heap pointers, to be released in one go.
 */

/**
 * Appends `ptr`, which the collection then owns, creating it when `*pc` is null. When memory runs
 * out errno is ENOMEM and `ptr` stays the caller's.
 */
void pCollect(void*** pc, void* ptr);

/** Releases every collected pointer with free(), then the array; `pc` may be null. */
void pClean(void** pc);

#ifdef __cplusplus
}
#endif
