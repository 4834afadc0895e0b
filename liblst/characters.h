/** Characters that editing removes. */
#pragma once

#include <cctype>

/** isspace() without the call for graphic ASCII, which is white space in no locale. */
inline bool isBlank(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return (byte <= ' ' || byte > '~') && std::isspace(byte) != 0;
}

inline bool isLineEnd(char character)
{
    return character == '\n' || character == '\r';
}
