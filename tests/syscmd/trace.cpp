#include "tests/syscmd/trace.h"

#include "tests/syscmd/device.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace {

// In arguments, in front of what they stand for; behind it, the end.
constexpr char SENT = '\1';
constexpr char ANSWER = '\2';
constexpr char LIKE = '\3';
constexpr char END = '\4';

/** An argument with what the daemon was sent, or answered, in its place. */
std::string looked(const std::string& argument, const std::vector<Answered>& exchanges)
{
    if (argument.empty() || (argument[0] != SENT && argument[0] != ANSWER))
        return argument;
    const auto number = static_cast<std::size_t>(std::stoi(argument.substr(1)));
    if (number >= exchanges.size())
        return "(no exchange " + std::to_string(number) + ")";
    return argument[0] == SENT ? exchanges[number].request : exchanges[number].reply;
}

/** The actual text where the expected one, with expressions in it, matches it; else the expected one. */
std::string resolved(const std::string& expected, const std::string& actual)
{
    std::string pattern;
    for (std::size_t at = 0; at < expected.size();) {
        const bool is_pattern = expected[at] == LIKE;
        const std::size_t end = std::min(expected.find(is_pattern ? END : LIKE, at), expected.size());
        const std::string part = expected.substr(at + (is_pattern ? 1 : 0), end - at - (is_pattern ? 1 : 0));
        static const std::regex special(R"([\^$.|()\[\]{}*+?\\])");
        pattern += is_pattern ? part : std::regex_replace(part, special, R"(\$&)");
        at = end + (is_pattern ? 1 : 0);
    }
    const bool has_pattern = expected.find(LIKE) != std::string::npos;
    return has_pattern && std::regex_match(actual, std::regex(pattern)) ? actual : expected;
}

std::string shown(const Statement& one)
{
    return one.level + (one.level == "=" ? "" : ":" + one.unit + ":" + std::to_string(one.line)) + " " + one.function +
           " " + one.text;
}

Texts shown(const std::vector<Statement>& statements)
{
    Texts all;
    for (const Statement& statement : statements)
        all.push_back(shown(statement));
    return all;
}

/** The journal's entries of one statement: a line each, the location in front of the first. */
void addEntries(std::vector<Statement>& entries, Statement statement)
{
    std::string rest =
        statement.level + ":" + statement.unit + ":" + std::to_string(statement.line) + ": " + statement.text;
    for (std::size_t end = 0; (end = rest.find_first_of("\r\n")) != std::string::npos; rest.erase(0, end + 1)) {
        statement.text = rest.substr(0, end);
        statement.text.erase(statement.text.find_last_not_of(' ') + 1); // libsystemd does so
        if (end != 0)
            entries.push_back(statement);
    }
}

} // namespace

Said saidWith(const std::string& key, const Texts& arguments)
{
    const std::size_t colon = key.find(": ");
    const std::string piece = key.substr(colon + 2);
    const Row* found = nullptr;
    for (const Row& row : rows()) {
        const std::string text = std::to_string(row.line) + '\t' + row.format + '\t' + row.meaning;
        if (row.function != key.substr(0, colon) || text.find(piece) == std::string::npos)
            continue;
        if (found != nullptr)
            throw std::runtime_error("more than one statement: " + key);
        found = &row;
    }
    if (found == nullptr || literals(*found, 0).size() != arguments.size() + 1)
        throw std::runtime_error("no statement with so many arguments: " + key);
    return {found, arguments};
}

std::string sent(int exchange)
{
    return SENT + std::to_string(exchange);
}

std::string answer(int exchange)
{
    return ANSWER + std::to_string(exchange);
}

std::string like(const std::string& expression)
{
    return LIKE + expression + END;
}

void expectSaid(const Trace& expected, int log_level)
{
    static const std::map<std::string, int> priorities = {{"ERROR", 3}, {"INFO", 6}, {"DEBUG", 7}};
    const std::vector<Statement> file = fileStatements();
    const Texts in_journal = shown(journalStatements());
    const std::vector<Answered> told = exchanges();
    Texts lines;
    std::vector<Statement> entries;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto& [row, texts] = expected[i];
        const std::string actual = i < file.size() ? shown(file[i]) : "";
        if (row == nullptr) {
            lines.push_back(shown({"=", "", 0, "", texts[0]}));
            continue;
        }
        const int line = lineOf(*row) == 0 && i < file.size() ? file[i].line : lineOf(*row);
        const Texts pieces = literals(*row, line);
        Statement one = {row->level, row->unit, line, "", pieces[0]};
        for (std::size_t piece = 1; piece < pieces.size(); ++piece)
            one.text += looked(texts[piece - 1], told) + pieces[piece];
        lines.push_back(resolved(shown(one), actual));
        if (lines.back() == actual) {
            EXPECT_TRUE(see(*row, line)) << "the line of another statement: " << actual;
        }
        one.function = row->function;
        if (priorities.at(row->level) <= log_level)
            addEntries(entries, one);
    }
    EXPECT_EQ(shown(file), lines) << "in the file";
    Texts in_order = shown(entries);
    for (std::size_t i = 0; i < std::min(in_order.size(), in_journal.size()); ++i)
        in_order[i] = resolved(in_order[i], in_journal[i]);
    EXPECT_EQ(in_journal, in_order) << "in the journal";
}
