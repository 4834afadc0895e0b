/**
 * Pseudonyms of names by a key: the same name gets the same one wherever the same key is used, and
 * without the key nobody can tell whose it is.
 */
#pragma once

#include <cstddef>

/** The most bytes of a pseudonym, its NUL included; an account's name takes so many. */
constexpr std::size_t PSEUDONYM_SIZE = 32;

/**
 * Takes the key from now on; null or empty: names stay. All memory that pseudonyms need is taken
 * here. To be called once, before other threads record.
 */
void pseudonym_key(const char* key);

/** Whether there is a key. */
bool pseudonyms_wanted();

/**
 * Writes the pseudonym of a name: `u-` and ten digits; of one with an at sign `u-…@d-…`, what
 * stands in front of it and behind it each by itself, so that alice and alice@example.com show the
 * same. Without a key, and for the empty name and "(null)", it is not to be called.
 */
void pseudonym_of(char (&pseudonym)[PSEUDONYM_SIZE], const char* name, std::size_t length);
