#include "devkit/broker/page/transaction_text.h"

#include "tools/between.h"

namespace {

constexpr std::size_t INDENT = 2;
constexpr char BLANKS[] = " \t\r\n";

/** Appends what stands between tags to the line that it belongs to. */
void add_text(std::vector<std::string>& lines, const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(BLANKS);
    if (begin == std::string::npos) {
        return;
    }
    const std::string trimmed = text.substr(begin, text.find_last_not_of(BLANKS) - begin + 1);
    if (lines.empty()) {
        lines.push_back(trimmed);
    } else {
        lines.back() += trimmed;
    }
}

bool starts(const std::string& text, std::size_t at, const char* what)
{
    return text.compare(at, std::char_traits<char>::length(what), what) == 0;
}

/** Behind the tag, remark or character data that begins there. */
std::size_t end_of_markup(const std::string& text, std::size_t at)
{
    const char* end = starts(text, at, "<![CDATA[") ? "]]>"
                      : starts(text, at, "<!--")    ? "-->"
                                                    : ">";
    const std::size_t found = text.find(end, at);
    return found == std::string::npos ? text.size() : found + std::char_traits<char>::length(end);
}

/** The text of an element or of its character data. */
std::string value_in(const std::string& text, const std::string& begin, const std::string& end)
{
    const std::string value = between(text, begin, end);
    return value.starts_with("<![CDATA[") ? between(value, "<![CDATA[", "]]>") : value;
}

} // namespace

std::vector<std::string> laid_out(const std::string& transaction)
{
    std::vector<std::string> lines;
    std::size_t depth = 0;
    std::size_t at = 0;
    bool opened = false; // the last tag began an element, whose text and end go on in its line
    while (at < transaction.size()) {
        const std::size_t tag = std::min(transaction.find('<', at), transaction.size());
        add_text(lines, transaction.substr(at, tag - at));
        if (tag == transaction.size()) {
            break;
        }
        at = end_of_markup(transaction, tag);
        const std::string markup = transaction.substr(tag, at - tag);
        if (markup.starts_with("<![CDATA[")) {
            add_text(lines, markup);
            continue;
        }
        const bool ends = markup.starts_with("</");
        depth -= ends && depth > 0 ? 1 : 0;
        if (ends && opened) {
            lines.back() += markup;
        } else {
            lines.push_back(std::string(INDENT * depth, ' ') + markup);
        }
        opened = !ends && !markup.ends_with("/>") && !markup.starts_with("<?") &&
                 !markup.starts_with("<!");
        depth += opened ? 1 : 0;
    }
    return lines;
}

std::string kind_of(const std::string& request)
{
    const std::size_t operation = request.find("<xs:", request.find("<xs:transaction") + 1);
    if (operation == std::string::npos) {
        return "";
    }
    const std::string tag = between(request.substr(operation), "<xs:", ">");
    return tag.substr(0, tag.find_first_of(BLANKS)) + ' ' + between(tag, " resource-type=\"", "\"");
}

std::string subject_of(const std::string& request)
{
    for (const auto& [begin, end] :
         {std::pair{"<xs:value>", "</xs:value>"},
          {" value=\"", "\""},
          {"<User_Name>", "</User_Name>"},
          {" UserName=\"", "\""}}) {
        if (std::string value = value_in(request, begin, end); !value.empty()) {
            return value;
        }
    }
    return between(between(request, "<xs:delete", ">"), "resource-id=\"", "\"");
}

std::string summary_of(const std::string& request)
{
    const std::string kind = kind_of(request);
    const std::string subject = subject_of(request);
    return kind.empty() ? "a request that is none" : kind + (subject.empty() ? "" : ' ' + subject);
}

std::string outcome_of(const std::string& reply)
{
    const std::string status = between(reply, "status=\"", "\"");
    const std::string reason = value_in(reply, "<xs:error-details>", "</xs:error-details>");
    return (status.empty() ? "no status" : status) + (reason.empty() ? "" : ": " + reason);
}
