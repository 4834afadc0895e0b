#include "devkit/recording/characters.h"

#include <glib.h>

namespace {

constexpr unsigned PRIVATE_AREA = 0xF700;

/** The private character for a byte from 0x80 on: three bytes. */
std::string character_for(unsigned char byte)
{
    char text[8] = {};
    const int length = g_unichar_to_utf8(PRIVATE_AREA + byte, text);
    return {text, static_cast<std::size_t>(length)};
}

} // namespace

std::string as_characters(const std::string& bytes)
{
    std::string text;
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    while (at < end) {
        const char* good_end = at;
        g_utf8_validate_len(at, static_cast<gsize>(end - at), &good_end);
        text.append(at, good_end);
        at = good_end;
        if (at < end) {
            const auto byte = static_cast<unsigned char>(*at++);
            text += byte == 0 ? std::string(1, '\0') : character_for(byte);
        }
    }
    return text;
}

std::string as_bytes(const std::string& characters)
{
    std::string bytes = characters;
    for (unsigned byte = 0x80; byte <= 0xFF && bytes.find('\xEF') != std::string::npos; ++byte) {
        const std::string character = character_for(static_cast<unsigned char>(byte));
        for (std::size_t at = 0; (at = bytes.find(character, at)) != std::string::npos; ++at) {
            bytes.replace(at, character.size(), 1, static_cast<char>(byte));
        }
    }
    return bytes;
}
