#include "devkit/boxwelld/markup.h"

#include "devkit/boxwelld/files.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::string_view CDATA = "<![CDATA[";
constexpr std::size_t DEEPEST_INDENT = 32; // levels; a text must not become long by its depth

/** The end of the piece that begins at `at`: a tag, a CDATA section, or what lies between. */
std::size_t end_of_piece(std::string_view text, std::size_t at)
{
    const std::string_view rest = text.substr(at);
    if (!rest.starts_with('<')) {
        return std::min(text.find('<', at), text.size());
    }
    const std::string_view mark = rest.starts_with(CDATA) ? "]]>" : ">";
    const std::size_t end = text.find(mark, at);
    return end == std::string_view::npos ? text.size() : end + mark.size();
}

} // namespace

std::string broken_at_tags(const std::string& text)
{
    std::string lines;
    std::size_t depth = 0;
    bool nested = false; // an element has ended inside the one that is open
    for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
        end = end_of_piece(text, at);
        const std::string piece = one_line(text.substr(at, end - at));
        const bool tag = piece.starts_with('<') && !piece.starts_with(CDATA);
        const bool closing = piece.starts_with("</");
        if (closing && depth > 0) {
            --depth;
        }
        if (tag && (!closing || nested) && !lines.empty()) {
            lines += '\n' + std::string(2 * std::min(depth, DEEPEST_INDENT), ' ');
        }
        lines += piece;
        if (!tag) {
            continue;
        }
        const bool whole = piece.ends_with("/>") || piece.ends_with("?>");
        nested = closing || whole;
        if (!nested) {
            ++depth;
        }
    }
    return lines + '\n';
}
