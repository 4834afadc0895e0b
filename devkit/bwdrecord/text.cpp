#include "devkit/bwdrecord/text.h"

#include "devkit/bwdrecord/eight_bytes.h"

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

/** What stands for a byte in JSON where those around it need no look. */
struct Shown {
    bool escaped = false; // by a backslash in front of it
    char letter = '\0';   // NUL: the byte needs a look
};
struct ShownTable {
    Shown of[256];

    constexpr ShownTable()
    {
        for (unsigned byte = ' '; byte < 0x7F; ++byte) {
            of[byte].letter = static_cast<char>(byte);
        }
        of[static_cast<unsigned char>('"')] = {true, '"'};
        of[static_cast<unsigned char>('\\')] = {true, '\\'};
        of[static_cast<unsigned char>('\t')] = {true, 't'};
        of[static_cast<unsigned char>('\r')] = {true, 'r'};
        of[static_cast<unsigned char>('\n')] = {true, 'n'};
    }
};
constexpr ShownTable SHOWN;

/** Writes, at `*to` and behind it, what stands for the next character, whose first byte needs a
 * look; how many bytes it has taken. */
std::size_t add_character(char** to, const char* at, std::size_t left)
{
    const auto byte = static_cast<unsigned char>(*at);
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

/** The same for any character; behind it. Quotes come when they like: they are told from others
 * without a branch. */
const char* add_next(char** to, const char* at, const char* end)
{
    const Shown shown = SHOWN.of[static_cast<unsigned char>(*at)];
    if (shown.letter == '\0') {
        return at + add_character(to, at, static_cast<std::size_t>(end - at));
    }
    **to = '\\';
    *to += shown.escaped ? 1 : 0;
    *(*to)++ = shown.letter;
    return at + 1;
}

constexpr std::size_t ROOM_OF_STEP = EIGHT + LONGEST_ESCAPE;

/** Copies eight bytes; how many of them, up to the first that does not, stand for themselves. */
std::ptrdiff_t copy_plain(char* to, const char* at)
{
    std::memcpy(to, at, EIGHT);
    const std::uint64_t bytes = eight_bytes(at);
    // Less than a space, a quote, a backslash, 0x7F and more. A borrow or carry reaches only those
    // behind such a byte.
    const std::uint64_t special =
        ((bytes - EACH_BYTE * ' ') | ((bytes ^ EACH_BYTE * '"') - EACH_BYTE) |
         ((bytes ^ EACH_BYTE * '\\') - EACH_BYTE) | bytes | (bytes + EACH_BYTE)) &
        TOP_BITS;
    return special == 0 ? EIGHT : __builtin_ctzll(special) / 8;
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
        if (!text_reserve(text, ROOM_OF_STEP)) {
            return;
        }
        const char* const last = text->bytes + text->room - ROOM_OF_STEP;
        char* to = text->bytes + text->length;
        while (bytes < end && to <= last) {
            if (end - bytes > EIGHT) {
                const std::ptrdiff_t plain = copy_plain(to, bytes);
                to += plain;
                bytes += plain;
            }
            bytes = add_next(&to, bytes, end);
        }
        text->length = static_cast<std::size_t>(to - text->bytes);
    }
}

void text_free(Text* text)
{
    std::free(text->bytes);
    *text = {};
}
