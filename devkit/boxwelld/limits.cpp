#include "devkit/boxwelld/limits.h"

#include "devkit/boxwelld/account.h"

#include <algorithm>

namespace {

constexpr struct {
    std::string_view begin;
    std::string_view end;
} OTHERS[] = {{"<![CDATA[", "]]>"}, {"<!--", "-->"}, {"<?", "?>"}, {"<!", ">"}};

void refuse_if(bool exceeds, std::string_view what, std::size_t limit)
{
    if (exceeds) {
        throw Refusal("Too large a request: " + std::string(what) + std::to_string(limit));
    }
}

/** Behind the tag that begins at `at`; counts its attributes. */
std::size_t end_of_tag(std::string_view text, std::size_t at)
{
    std::size_t attributes = 0;
    while ((at = text.find_first_of("=\"'>", at)) != std::string_view::npos && text[at] != '>') {
        if (text[at] == '=') {
            ++attributes;
        } else {
            at = text.find(text[at], at + 1);
        }
        refuse_if(
            attributes > MOST_ATTRIBUTES, "attributes of an element, more than ", MOST_ATTRIBUTES
        );
        at = at == std::string_view::npos ? text.size() : at + 1;
    }
    return at == std::string_view::npos ? text.size() : at + 1;
}

/** Behind the comment, section or declaration that begins at `at`; `at` where an element's tag
 * does. */
std::size_t end_of_other(std::string_view text, std::size_t at)
{
    for (const auto& [begin, end] : OTHERS) {
        if (text.substr(at).starts_with(begin)) {
            const std::size_t found = text.find(end, at + begin.size());
            return found == std::string_view::npos ? text.size() : found + end.size();
        }
    }
    return at;
}

} // namespace

void expect_within_limits(std::string_view text)
{
    refuse_if(text.size() > MOST_BYTES, "bytes, more than ", MOST_BYTES);
    std::size_t depth = 0;
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string_view::npos;) {
        const std::size_t begin = at;
        at = end_of_other(text, begin);
        if (at != begin) {
            continue;
        }
        at = end_of_tag(text, begin);
        const std::string_view tag = text.substr(begin, at - begin);
        if (tag.starts_with("</")) {
            depth -= std::min<std::size_t>(depth, 1);
        } else if (!tag.ends_with("/>")) {
            ++depth;
        }
        refuse_if(depth > DEEPEST, "elements within each other, more than ", DEEPEST);
    }
}
