#include "devkit/bwdrecord/text.h"

#include <glib.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t FIRST_ROOM = 4096;
/** The most bytes that one byte of a text takes in JSON: a backslash, u and four digits. */
constexpr std::size_t LONGEST_ESCAPE = 6;
constexpr unsigned PRIVATE_AREA = 0xF700;

/** Which bytes stand for themselves in JSON and need no look at those around them. */
struct PlainTable {
    bool of[256] = {};

    constexpr PlainTable()
    {
        for (unsigned byte = ' '; byte < 0x7F; ++byte) {
            of[byte] = byte != '"' && byte != '\\';
        }
    }
};
constexpr PlainTable PLAIN;

/** What stands behind a backslash for this byte; NUL: nothing does. */
char letter_for(char byte)
{
    switch (byte) {
    case '"':
    case '\\':
        return byte;
    case '\t':
        return 't';
    case '\r':
        return 'r';
    case '\n':
        return 'n';
    default:
        return '\0';
    }
}

/** Writes, at `*to` and behind it, what stands for the next character; how many bytes it has taken.
 */
std::size_t add_character(char** to, const char* at, std::size_t left)
{
    const auto byte = static_cast<unsigned char>(*at);
    if (const char letter = letter_for(*at)) {
        *(*to)++ = '\\';
        *(*to)++ = letter;
        return 1;
    }
    if (byte >= 0x80) {
        const gunichar character =
            g_utf8_get_char_validated(at, static_cast<gssize>(left < 8 ? left : 8));
        const bool readable =
            character != static_cast<gunichar>(-1) && character != static_cast<gunichar>(-2);
        if (readable) {
            const std::size_t length = static_cast<unsigned char>(g_utf8_skip[byte]);
            std::memcpy(*to, at, length);
            *to += length;
            return length;
        }
    }
    const unsigned code = byte >= 0x80 ? PRIVATE_AREA + byte : byte;
    char escape[LONGEST_ESCAPE + 1];
    std::snprintf(escape, sizeof escape, "\\u%04x", code);
    std::memcpy(*to, escape, LONGEST_ESCAPE);
    *to += LONGEST_ESCAPE;
    return 1;
}

} // namespace

bool text_reserve(Text* text, std::size_t more)
{
    if (!text->whole || more <= text->room - text->length) {
        return text->whole;
    }
    std::size_t room = text->room > 0 ? 2 * text->room : FIRST_ROOM;
    if (room < text->length + more) {
        room = text->length + more;
    }
    auto* bytes = static_cast<char*>(std::realloc(text->bytes, room));
    if (bytes == nullptr) {
        text->whole = false;
        return false;
    }
    text->bytes = bytes;
    text->room = room;
    return true;
}

void text_add(Text* text, const char* bytes, std::size_t length)
{
    if (text_reserve(text, length) && length > 0) {
        std::memcpy(text->bytes + text->length, bytes, length);
        text->length += length;
    }
}

void text_add_format(Text* text, const char* format, ...)
{
    char piece[256];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(piece, sizeof piece, format, arguments);
    va_end(arguments);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof piece) {
        text->whole = false;
        return;
    }
    text_add(text, piece, static_cast<std::size_t>(length));
}

void text_add_json(Text* text, const char* bytes, std::size_t length)
{
    const char* const end = bytes + length;
    while (bytes < end) {
        // As many as fit whatever they are, so that room is looked for rarely.
        if (!text_reserve(text, LONGEST_ESCAPE)) {
            return;
        }
        const std::size_t fit = (text->room - text->length) / LONGEST_ESCAPE;
        const char* const stop = static_cast<std::size_t>(end - bytes) < fit ? end : bytes + fit;
        char* to = text->bytes + text->length;
        while (bytes < stop) {
            while (bytes < stop && PLAIN.of[static_cast<unsigned char>(*bytes)]) {
                *to++ = *bytes++;
            }
            if (bytes < stop) {
                bytes += add_character(&to, bytes, static_cast<std::size_t>(end - bytes));
            }
        }
        text->length = static_cast<std::size_t>(to - text->bytes);
    }
}

void text_free(Text* text)
{
    std::free(text->bytes);
    *text = {};
}
