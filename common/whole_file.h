/** Whole files as texts. */
#pragma once

/**
 * Reads the whole file at a formatted path.
 *
 * @return its content, which the caller releases with free(); null when it cannot be opened or
 *         closed, is empty, or memory runs out
 */
[[gnu::__format__(__printf__, 1, 2)]] char* aGetFile(const char* format, ...);

/**
 * Reads an open descriptor to its end; an interrupted read is repeated, a failed one ends the text.
 * The descriptor stays open.
 *
 * @return what was read, which the caller releases with free(); null for nothing
 */
char* aGetFileContent(int fn);
