/** Random suffixes of names. */
#pragma once

/**
 * Makes a text of `length` random digits 0-9a-f. Reseeds rand() with the time in seconds: two calls
 * within a second give the same text.
 *
 * @return 0 with `*result` set, which the caller releases with free(); -1 when memory runs out or
 *         an argument is bad
 */
int generateHashString(char** result, int length);
