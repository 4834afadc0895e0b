/** The first line of a stream. */
#pragma once

#include <cstdio>

/**
 * Reads the first line of a stream, without its line end: at most `bufsize` - 1 bytes, of which
 * every carriage return and line feed becomes a NUL.
 *
 * @return 0, or -1 when nothing could be read
 */
int readline(char* buf, int bufsize, FILE* file);
