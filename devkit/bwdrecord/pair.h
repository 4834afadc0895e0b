/** Pairs of hashes as operations take them: Base64 of a printable text with a colon. */
#pragma once

#include <cstddef>

struct Run {
    const char* at = nullptr; /**< null: there is none */
    std::size_t length = 0;   /**< its padding included */
};

/** The first run of Base64 characters that is a pair. None may have begun in front of `at`. */
Run next_pair(const char* at, const char* end);
