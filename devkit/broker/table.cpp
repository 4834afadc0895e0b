#include "devkit/broker/table.h"

#include <glib.h>

#include <algorithm>
#include <numeric>

namespace {

constexpr std::size_t MARGIN = 2;
constexpr std::size_t GAP = 2;
constexpr std::size_t NARROWEST = 8;

using Widths = std::vector<std::size_t>;

Widths natural_widths(const std::vector<TableRow>& rows)
{
    Widths widths;
    for (const TableRow& row : rows) {
        widths.resize(std::max(widths.size(), row.cells.size()));
        for (std::size_t column = 0; column < row.cells.size(); ++column) {
            widths[column] = std::max(widths[column], width_of(row.cells[column]));
        }
    }
    return widths;
}

/** Takes from the widest column as long as the line is too long. */
void fit(Widths& widths, std::size_t width)
{
    const auto line = [&widths] {
        return std::accumulate(widths.begin(), widths.end(), MARGIN) + GAP * (widths.size() - 1);
    };
    while (width > 0 && !widths.empty() && line() > width) {
        const auto widest = std::max_element(widths.begin(), widths.end());
        if (*widest <= NARROWEST) {
            return;
        }
        --*widest;
    }
}

/** Takes the beginning of `text` that fits into `width`: at a blank, where there is one. */
std::string take_line(std::string& text, std::size_t width)
{
    const char* end = text.c_str();
    const char* blank = nullptr;
    for (std::size_t used = 0; *end != '\0'; end = g_utf8_next_char(end)) {
        used += g_unichar_iswide(g_utf8_get_char(end)) != FALSE ? 2 : 1;
        if (used > width && end != text.c_str()) {
            break;
        }
        blank = *end == ' ' ? end : blank;
    }
    const char* cut = *end == '\0' || blank == nullptr ? end : blank;
    const auto length = static_cast<std::size_t>(cut - text.c_str());
    std::string line = text.substr(0, length);
    text.erase(0, length);
    text.erase(0, text.find_first_not_of(' '));
    return line;
}

/** One line of a row; what did not fit stays in `cells`. */
std::string next_line(std::vector<std::string>& cells, const Widths& widths)
{
    std::string line(MARGIN, ' ');
    for (std::size_t column = 0; column < cells.size(); ++column) {
        const std::string part = take_line(cells[column], widths[column]);
        line += part;
        line.append(widths[column] - std::min(widths[column], width_of(part)) + GAP, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

} // namespace

std::string styled(const std::string& text, Style style, bool colours)
{
    if (!colours || style == Style::Plain) {
        return text;
    }
    return (style == Style::Heading ? "\033[1m" : "\033[31m") + text + "\033[0m";
}

std::string printable(const std::string& text)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const char* begin = text.c_str() + at;
        const gunichar c = g_utf8_get_char_validated(begin, static_cast<gssize>(text.size() - at));
        const bool valid = c < 0x110000;
        const std::size_t length =
            valid ? static_cast<std::size_t>(g_utf8_next_char(begin) - begin) : 1;
        if (valid && c != '\\' && g_unichar_isprint(c) != FALSE) {
            shown.append(begin, length);
        } else {
            for (std::size_t i = 0; i < length; ++i) {
                const auto byte = static_cast<unsigned char>(begin[i]);
                shown += {'\\', 'x', DIGITS[byte / 16], DIGITS[byte % 16]};
            }
        }
        at += length;
    }
    return shown;
}

std::size_t width_of(const std::string& text)
{
    std::size_t width = 0;
    for (const char* c = text.c_str(); *c != '\0'; c = g_utf8_next_char(c)) {
        const gunichar character = g_utf8_get_char(c);
        width += g_unichar_iszerowidth(character) != FALSE ? 0
                 : g_unichar_iswide(character) != FALSE    ? 2
                                                           : 1;
    }
    return width;
}

std::string table(const std::vector<TableRow>& rows, std::size_t width, bool colours)
{
    Widths widths = natural_widths(rows);
    fit(widths, width);
    std::string text;
    for (TableRow row : rows) {
        do {
            text += styled(next_line(row.cells, widths), row.style, colours);
            text += '\n';
        } while (std::any_of(row.cells.begin(), row.cells.end(), [](const std::string& cell) {
            return !cell.empty();
        }));
    }
    return text;
}
