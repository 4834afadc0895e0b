/** Null texts in requests and statements. */
#pragma once

/** What printf makes of a null text, spelled out because a compiler need not. */
inline const char* printable(const char* text)
{
    return text == nullptr ? "(null)" : text;
}
