/**
 * The file of a recording, to which several processes may append. Whatever fails is passed over:
 * nothing waits, and no signal comes.
 */
#pragma once

#include <cstddef>

/**
 * Opens the file to append to it; one that is not there is made, for its owner alone.
 *
 * @param empty  receives whether nothing is in it
 * @return a descriptor, which the caller closes; -1 when it cannot be opened or is no regular file
 */
int open_recording(const char* path, bool* empty);

/**
 * Appends the bytes by one call of write(), so that they do not mix with those of others: wholly,
 * or as if nothing had been written; which of the two.
 */
bool append_whole(int fd, const char* bytes, std::size_t length);
