/** Characters that editing removes. */
#pragma once

#include <cctype>

/** isspace(); ASCII, which is the same in every locale, without the call. */
inline bool isBlank(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte <= '~' ? byte == ' ' || (byte >= '\t' && byte <= '\r') : std::isspace(byte) != 0;
}

inline bool isLineEnd(char character)
{
    return character == '\n' || character == '\r';
}
