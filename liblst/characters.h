/** Characters that editing removes, and their removal. */
#pragma once

#include <cctype>

/**
 * White space as isspace(3) tells it in the thread's locale, by the table that it reads: one call a
 * text, not one a byte. The table is of the Linux Standard Base's interface, __ctype_b_loc().
 */
class WhiteSpace {
  public:
    bool operator()(char character) const
    {
        return (classes[static_cast<unsigned char>(character)] & _ISspace) != 0;
    }

  private:
    const unsigned short* classes = *__ctype_b_loc();
};

/** Removes the characters of a kind from a text in place; returns its new end. */
template<typename Kind> char* removeEach(char* text, const Kind& isRemoved)
{
    char* to = text;
    for (const char* from = text; *from != '\0'; ++from) {
        *to = *from; // whatever it is: a branch would be guessed wrong at every other gap
        to += isRemoved(*from) ? 0 : 1;
    }
    *to = '\0';
    return to;
}
