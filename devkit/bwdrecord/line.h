/** The lines that this library writes; docs/formats-recording.md tells what they hold. */
#pragma once

#include "devkit/bwdrecord/text.h"

#include <cstddef>
#include <cstdint>

/** One call of the client library and what came of it. */
struct Call {
    int pid = 0;
    unsigned long number = 0;       /**< of the process's calls, from 1 on */
    std::int64_t began_us = 0;      /**< microseconds since 1970 */
    std::int64_t took_us = 0;       /**< microseconds */
    int result = 0;                 /**< what the call returned */
    int error = 0;                  /**< errno behind a call that failed; else 0 */
    const char* request = nullptr;  /**< null: none was given */
    std::size_t request_length = 0; /**< bytes */
    const char* reply = nullptr;    /**< null: there is none */
    std::size_t reply_length = 0;   /**< bytes */
};

/** The longest request or reply, in bytes, that is recorded; of a longer one only its length is. */
constexpr std::size_t LONGEST_RECORDED = 1U << 20U;

/** Adds the line with which a file begins, with its line end. */
void add_header(Text* out);

/** Adds a call's line, with its line end. */
void add_call(Text* out, const Call& call);
