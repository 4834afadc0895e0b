// Editing in place: white space and line ends removed.
#include "bench/families.h"
#include "bench/growth.h"

#include <array>
#include <cctype>
#include <string>

namespace {

using Table256 = std::array<bool, 256>;

Table256 spaces()
{
    Table256 table = {};
    for (int byte = 0; byte < 256; ++byte) {
        table[static_cast<std::size_t>(byte)] = std::isspace(byte) != 0;
    }
    return table;
}

/** Edits a fresh copy of the text. */
template<typename Edit> Text edited(const std::string& text, Edit edit)
{
    char* copy = static_cast<char*>(std::malloc(text.size() + 1));
    std::memcpy(copy, text.c_str(), text.size() + 1);
    edit(copy);
    return Text(copy);
}

/** Removes the characters that the table names, by a loop over the bytes. */
void removeByTable(const Table256& table, char* text)
{
    char* to = text;
    for (const char* from = text; *from != '\0'; ++from) {
        if (!table[static_cast<unsigned char>(*from)]) {
            *to++ = *from;
        }
    }
    *to = '\0';
}

void trimByTable(const Table256& table, char* text)
{
    const char* begin = text;
    while (table[static_cast<unsigned char>(*begin)]) {
        ++begin;
    }
    std::size_t length = std::strlen(begin);
    while (length > 0 && table[static_cast<unsigned char>(begin[length - 1])]) {
        --length;
    }
    std::memmove(text, begin, length);
    text[length] = '\0';
}

/** Lines of words of several lengths, behind blanks and before more. */
std::string wordsOf(std::size_t bytes)
{
    std::string text = "  \t ";
    for (std::size_t i = 1; text.size() < bytes - bytes / 16; ++i) {
        text.append(1 + i * i % 11, 'w').append(i % 7 != 0 ? " " : "\r\n");
    }
    return text.append(bytes / 16, ' ');
}

} // namespace

void benchEditing(Frame& frame)
{
    const Table256 blank = spaces();
    Table256 line_end = {};
    line_end['\r'] = line_end['\n'] = true;
    struct Size {
        const char* name;
        std::size_t bytes;
        double goal;
    };
    for (const Size& size :
         {Size{"1 KB", 1000, 0}, Size{"16 KiB", 16 << 10, 1.1}, Size{"1 MiB", 1 << 20, 1.1}}) {
        const std::string text = wordsOf(size.bytes);
        const auto against_table = [&](const std::string& name, auto ours, auto by_table) {
            frame.compare(
                {.name = name + ", " + size.name, .against = "table loop", .goal = size.goal},
                [&] { return edited(text, ours); }, [&] { return edited(text, by_table); }
            );
        };
        against_table("trimStr", trimStr, [&](char* copy) { trimByTable(blank, copy); });
        against_table("chopStr", chopStr, [&](char* copy) { removeByTable(line_end, copy); });
        against_table("delGaps", delGaps, [&](char* copy) { removeByTable(blank, copy); });
    }
}

void growEditing(Growth& growth)
{
    growth.measure("trim", {100, 1000, 10000, 100000, 1000000, 10000000}, [](std::size_t bytes) {
        const std::string blanks(bytes / 10, ' ');
        const auto text = std::make_shared<std::string>(
            blanks + std::string(bytes - 2 * blanks.size(), 'x') + blanks
        );
        return Curves{
            curveOf("trimStr", [text] { return edited(*text, trimStr); }),
            curveOf("floor: table loop", [text] {
                static const Table256 blank = spaces();
                return edited(*text, [](char* copy) { trimByTable(blank, copy); });
            })};
    });
}
