/** Reading a descriptor to its end, and writing all of a text. */
#pragma once

#include <sys/types.h>

#include <cstddef>

/** What becomes of the text read so far when a read fails. */
enum class OnReadError {
    Release, /**< the failure is the result: null, errno tells the reason */
    Keep,    /**< the failure ends the input: the text read so far is the result */
};

/**
 * Reads `fd` from its position to its end. A regular file's size is taken as a hint of what to
 * allocate, never as the truth, so that pipes, growing files and files of /proc are read whole too.
 * What has no size is read in chunks of 2048 bytes.
 *
 * A read that was interrupted or refused for now (EINTR, EAGAIN) is tried again and leaves no
 * trace in errno; while it is refused the caller sleeps until there is something to read.
 *
 * @param fd        the descriptor; stays open
 * @param on_error  what any other read error means
 * @return the text, NUL-terminated, which the caller releases with free(); null for an empty input,
 *         a failed read as `on_error` says, and exhausted memory (errno ENOMEM, the text released)
 */
char* readToEnd(int fd, OnReadError on_error);

/**
 * Reads the file at `path` whole, as readToEnd() does.
 *
 * @param content  receives the text; set to null when the file was read but could not be closed
 * @return 0; -1 when it cannot be opened or closed, and when readToEnd() gives null
 */
int readFile(char** content, const char* path, OnReadError on_error);

/**
 * Writes all of a text, however many writes it takes; tried again as readToEnd() reads again.
 *
 * @return false, with errno, when a write fails
 */
bool writeAll(int fd, const char* text, std::size_t length);
