#include "devkit/broker/explain/entry.h"

#include "devkit/broker/explain/journal.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace {

constexpr std::string_view LEVELS[] = {"ERROR", "INFO", "DEBUG"};

/** What local time looks like in the log file: letters, digits and what is itself. */
constexpr std::string_view STAMP = "Aaa dd dddd dd:dd:dd ";

/** Where a statement begins in a line. */
struct Mark {
    std::size_t begin = std::string_view::npos; // of what stands in front of its text
    std::size_t text = 0;
    Location location;
    std::string time;
    std::string process;
};

bool is_like(char c, char shape)
{
    const auto byte = static_cast<unsigned char>(c);
    return shape == 'd'
               ? std::isdigit(byte) != 0 || c == ' '
               : (std::isalpha(static_cast<unsigned char>(shape)) != 0 ? std::isalpha(byte) != 0
                                                                       : c == shape);
}

/** How much of the end of a text is a time stamp; of a whole text a stamp's end is enough, as at
 * the beginning of a cut file. Nothing: it is none. */
std::size_t stamp_length(std::string_view text)
{
    const auto size = std::min(text.size(), STAMP.size());
    const bool is_stamp = std::equal(
        text.rbegin(), text.rbegin() + static_cast<std::ptrdiff_t>(size), STAMP.rbegin(), is_like
    );
    return is_stamp ? size : 0;
}

/** Reads LEVEL:UNIT:LINE at the beginning of `text`; the bytes that it takes, or 0. */
std::size_t read_location(std::string_view text, Location& location)
{
    for (const std::string_view level : LEVELS) {
        if (!text.starts_with(level) || !text.substr(level.size()).starts_with(':')) {
            continue;
        }
        const auto unit = level.size() + 1;
        const auto colon = text.find(':', unit);
        if (colon == std::string_view::npos || !is_unit(text.substr(unit, colon - unit))) {
            return 0;
        }
        const char* const digits = text.data() + colon + 1;
        const auto [end, error] = std::from_chars(digits, text.data() + text.size(), location.line);
        location.level = level;
        location.unit = text.substr(unit, colon - unit);
        return error == std::errc() ? static_cast<std::size_t>(end - text.data()) : 0;
    }
    return 0;
}

/** Reads "TIME HOST NAME[PROCESS]: ", which journalctl's short forms have; whether it is that. */
bool read_short_prefix(std::string_view prefix, Mark& mark)
{
    if (!prefix.ends_with(": ")) {
        return prefix.empty(); // `cat` has none
    }
    prefix.remove_suffix(2);
    const auto name = prefix.rfind(' ');
    if (prefix.ends_with(']')) {
        const auto bracket = prefix.rfind('[');
        mark.process = prefix.substr(bracket + 1, prefix.size() - bracket - 2);
    }
    const auto host = name == std::string_view::npos ? name : prefix.rfind(' ', name - 1);
    mark.time = host == std::string_view::npos ? "" : prefix.substr(0, host);
    return true;
}

/** The next statement at or behind `from`; text behind it is not looked at. */
Mark next_mark(std::string_view line, std::size_t from)
{
    for (auto at = line.find(".cpp:", from); at != std::string_view::npos;
         at = line.find(".cpp:", at + 1)) {
        const auto unit = line.rfind(':', at);
        const auto blank = unit == std::string_view::npos || unit == 0
                               ? std::string_view::npos
                               : line.find_last_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ", unit - 1);
        const auto begin = blank == std::string_view::npos ? 0 : blank + 1;
        Mark mark;
        const auto length = begin < from ? 0 : read_location(line.substr(begin), mark.location);
        if (length == 0) {
            continue;
        }
        const std::string_view before = line.substr(from, begin - from);
        const std::string_view behind = line.substr(begin + length);
        const auto stamp = stamp_length(before);
        if (behind.starts_with(": ") && from == 0 && read_short_prefix(before, mark)) {
            mark.begin = 0;
            mark.text = begin + length + 2;
            return mark;
        }
        const bool at_start = from == 0 && stamp == before.size();
        if (behind.starts_with(' ') && (stamp == STAMP.size() || at_start)) {
            mark.begin = begin - stamp;
            mark.text = begin + length + 1;
            mark.time = stamp == STAMP.size() ? line.substr(mark.begin, stamp - 1) : "";
            return mark;
        }
    }
    return {};
}

bool holds_any(std::string_view text, std::initializer_list<std::string_view> words)
{
    return std::any_of(words.begin(), words.end(), [text](std::string_view word) {
        return text.find(word) != std::string_view::npos;
    });
}

bool is_control(char c)
{
    constexpr std::string_view TEXTS_HAVE = "\t\r\x1b";
    return std::iscntrl(static_cast<unsigned char>(c)) != 0 &&
           TEXTS_HAVE.find(c) == std::string_view::npos;
}

/** What is no statement. */
Entry other(std::string_view text)
{
    Entry entry;
    entry.text = text;
    if (std::any_of(text.begin(), text.end(), is_control)) {
        entry.kind = Entry::Kind::NoText;
    } else if (holds_any(text, {"<xs:mxl", "</xs:mxl>"})) {
        entry.kind = Entry::Kind::Transaction;
    } else if (holds_any(
                   text, {"smbhash=", "syshash=", ", email=", "p2pusername=", "Hash><![CDATA[",
                          "</SmbHash>", "</SysHash>"}
               )) {
        entry.kind = Entry::Kind::Secret;
    }
    return entry;
}

/** Without the colours that journalctl gives to a terminal, and blocks of zeros that a failing
 * power supply leaves in a file. */
std::string plain(const std::string& line)
{
    std::string text;
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (line.compare(at, 2, "\x1b[") == 0) {
            at = std::min(line.find('m', at), line.size() - 1);
        } else if (line[at] != '\0') {
            text += line[at];
        }
    }
    return text;
}

void add_text_entries(std::vector<Entry>& entries, const std::string& line)
{
    const std::string text = plain(line);
    Mark mark = next_mark(text, 0);
    if (mark.begin == std::string::npos) {
        entries.push_back(other(line));
        return;
    }
    if (mark.begin > 0) {
        entries.push_back(other(text.substr(0, mark.begin)));
    }
    while (mark.begin != std::string::npos) {
        const Mark next = next_mark(text, mark.text);
        const auto end = std::min(next.begin, text.size());
        const std::string_view said = std::string_view(text).substr(mark.text, end - mark.text);
        if (auto statement = statement_of(mark.location, said)) {
            entries.push_back({Entry::Kind::Said, "", mark.time, mark.process, *statement});
        } else {
            entries.push_back(other(std::string_view(text).substr(mark.begin, end - mark.begin)));
        }
        mark = next;
    }
}

} // namespace

std::vector<Entry> entries_of(const std::string& line)
{
    std::vector<Entry> entries;
    const auto record = journal_record(line);
    if (!record) {
        add_text_entries(entries, line);
        return entries;
    }
    add_text_entries(entries, record->message);
    for (Entry& entry : entries) {
        entry.time = record->time;
        entry.process = record->process;
        if (entry.kind == Entry::Kind::Foreign || entry.kind == Entry::Kind::NoText) {
            entry.kind = Entry::Kind::Foreign; // as JSON it is text
            entry.text = line;
        }
    }
    return entries;
}
