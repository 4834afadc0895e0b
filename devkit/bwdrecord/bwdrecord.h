/** What the library does when it is loaded; and what a test does instead. */
#pragma once

/**
 * Finds the real client library's call, and takes where and how to record.
 *
 * @param path  the file; null, empty or longer than a path can be: nothing is recorded
 * @param key   for pseudonyms; null or empty: names stay
 */
void record_to(const char* path, const char* key);
