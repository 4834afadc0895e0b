/**
 * A text that grows, where nothing may throw: what does not fit into memory makes the text unfit
 * for use, and nothing else.
 */
#pragma once

#include <cstddef>

struct Text {
    char* bytes = nullptr; /**< not terminated; the owner releases it by text_free() */
    std::size_t length = 0;
    std::size_t room = 0;
    bool whole = true; /**< false: memory ran out, something is missing */
};

/** Makes room for `more` bytes beyond the length; whether there is. */
bool text_reserve(Text* text, std::size_t more);

void text_add(Text* text, const char* bytes, std::size_t length);

/** Adds a formatted text of up to 255 bytes; a longer one makes the text unfit. */
[[gnu::format(printf, 2, 3)]] void text_add_format(Text* text, const char* format, ...);

/**
 * Adds what stands for these bytes inside a JSON string. Bytes that are no UTF-8 become characters
 * of the private area, U+F700 plus the byte, so that a reader can tell every byte.
 */
void text_add_json(Text* text, const char* bytes, std::size_t length);

void text_free(Text* text);
