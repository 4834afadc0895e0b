#include "devkit/broker/replay/comparison.h"

#include "devkit/boxwelld/markup.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>

namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t OWN_LINE_DIGITS = 3; // longer numbers are support's, and stay
constexpr std::size_t TIME_DIGITS = 9;

/** Replaces runs of digits behind `mark`, or anywhere where it is empty, of such lengths. */
void replace_numbers(
    std::string& text,
    const std::string& mark,
    std::size_t shortest,
    std::size_t longest,
    const std::string& by
)
{
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos;) {
        at += mark.size();
        const std::size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
        if (end - at >= shortest && end - at <= longest) {
            text.replace(at, end - at, by);
            at += by.size();
        } else {
            at = std::max(end, mark.empty() ? at + 1 : at);
        }
        if (at >= text.size()) {
            return;
        }
    }
}

std::string shown(const RecordedStatement& statement)
{
    std::string text =
        statement.unit + ':' + std::to_string(statement.line) + ": " + statement.text;
    replace_numbers(text, ".cpp:", 1, OWN_LINE_DIGITS, "LINE");
    if (text.find("curtime") != std::string::npos) {
        replace_numbers(text, "", TIME_DIGITS, text.size(), "TIME");
    }
    return statement.level + ' ' + text;
}

void add_indented(Lines& lines, const std::string& text)
{
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        std::replace_if(
            line.begin(), line.end(), [](unsigned char c) { return std::iscntrl(c) != 0; }, ' '
        );
        lines.push_back("  " + line);
    }
}

/** The statement's lines, the first behind its name. */
void add_text(Lines& lines, const std::string& name, const std::string& text)
{
    Lines more;
    add_indented(more, text);
    if (more.empty()) {
        more.emplace_back("  ");
    }
    more.front() = name + ' ' + more.front().substr(2);
    lines.insert(lines.end(), more.begin(), more.end());
}

/** White space that would not be seen as what it is. */
std::string with_visible_blanks(const std::string& text)
{
    std::string shown;
    for (const char c : text) {
        shown += c == '\t' ? "\\t" : c == '\r' ? "\\r" : c == '\n' ? "\\n" : std::string(1, c);
    }
    return shown;
}

bool is_the_plug_ins(const FactChange& change)
{
    static const Lines OWN = {"owner file", "flag", "session", "event"};
    return std::find(OWN.begin(), OWN.end(), change.what) != OWN.end();
}

} // namespace

Performance recorded_performance(const RecordedCommand& command)
{
    Performance performance = {{}, command.statements, command.changes, command.answer};
    for (const RecordedCall& call : command.calls) {
        performance.requests.push_back(call.request.value_or(""));
    }
    return performance;
}

Lines lines_of(const Performance& performance, const Performance& other)
{
    Lines lines;
    for (const std::string& request : performance.requests) {
        lines.emplace_back("request");
        add_indented(lines, broken_at_tags(with_visible_blanks(request)));
    }
    if (performance.statements && other.statements) {
        for (const RecordedStatement& statement : *performance.statements) {
            add_text(lines, "statement", shown(statement));
        }
    }
    if (performance.answer && other.answer) {
        for (const FactChange& change : performance.changes) {
            if (is_the_plug_ins(change)) {
                for (const std::string& line : for_people(change)) {
                    add_text(lines, "change", line);
                }
            }
        }
        const auto& response = performance.answer->response;
        add_text(lines, "code", performance.answer->code);
        add_text(lines, "response", response ? '"' + *response + '"' : "none");
    }
    return lines;
}
