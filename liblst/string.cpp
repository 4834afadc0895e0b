#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"

#include <cctype>
#include <cstring>

namespace {

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

using Word = std::size_t;
constexpr Word ONES = ~Word{0} / 255; // a one in each byte

/** Whether one of a word's bytes is `byte`: xor makes it 0, from which alone a borrow reaches the
 * top bit of a byte that had none (S. E. Anderson, "Bit Twiddling Hacks"). */
bool holds(Word word, char byte)
{
    word ^= ONES * static_cast<unsigned char>(byte);
    return ((word - ONES) & ~word & ONES * 128) != 0;
}

/** Copies up to `size` bytes, of which there is one, without line ends: a word at once that has
 * none, or else byte by byte; returns how many were read, and moves `to` behind what was written.
 */
std::size_t copyWithoutLineEnds(char*& to, const char* from, std::size_t size)
{
    Word word = 0;
    if (size >= sizeof word) {
        std::memcpy(&word, from, sizeof word);
        if (!holds(word, '\n') && !holds(word, '\r')) {
            std::memcpy(to, &word, sizeof word);
            to += sizeof word;
            return sizeof word;
        }
        size = sizeof word;
    }
    for (const char* end = from + size; from != end; ++from) {
        *to = *from;
        to += *from == '\n' || *from == '\r' ? 0 : 1;
    }
    return size;
}

} // namespace

EXPORTED char* ptCutStr(const char* string, const char* begin, const char* end)
{
    if (string == nullptr || begin == nullptr || end == nullptr) {
        return badArgument<char*>(nullptr);
    }
    const char* mark = std::strstr(string, begin);
    if (mark == nullptr) {
        return strdup("");
    }
    const char* text = mark + std::strlen(begin);
    const char* stop = *end != '\0' ? std::strstr(text, end) : nullptr;
    return stop != nullptr ? strndup(text, static_cast<std::size_t>(stop - text)) : strdup(text);
}

EXPORTED int chopStr(char* s)
{
    if (s == nullptr) {
        return badArgument(-1);
    }
    char* to = s;
    for (std::size_t rest = std::strlen(s); rest != 0;) {
        const std::size_t taken = copyWithoutLineEnds(to, s, rest);
        s += taken;
        rest -= taken;
    }
    *to = '\0';
    return 0;
}

EXPORTED int trimStr(char* s)
{
    if (s == nullptr) {
        return badArgument(-1);
    }
    const WhiteSpace isBlank;
    const char* begin = s;
    while (isBlank(*begin)) {
        ++begin;
    }
    std::size_t length = std::strlen(begin);
    while (length > 0 && isBlank(begin[length - 1])) {
        --length;
    }
    if (begin != s) {
        std::memmove(s, begin, length);
    }
    s[length] = '\0';
    return 0;
}

EXPORTED void delGaps(char* str)
{
    if (str == nullptr) {
        errno = EINVAL;
        return;
    }
    const WhiteSpace isBlank;
    char* to = str;
    for (const char* from = str; *from != '\0'; ++from) {
        *to = *from; // whatever it is: a branch would be guessed wrong at every other gap
        to += isBlank(*from) ? 0 : 1;
    }
    *to = '\0';
}

EXPORTED char* Strdup(const char* str)
{
    return str != nullptr ? strdup(str) : nullptr;
}
