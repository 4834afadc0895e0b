#include "tests/syscmd/trace.h"

#include "tests/syscmd/device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace {

// In front of an exchange's number, in arguments.
constexpr char SENT = '\1';
constexpr char ANSWER = '\2';

/** An argument, with what the daemon was sent or answered in its place. */
std::string looked(const std::string& argument, const std::vector<Answered>& exchanges)
{
    if (argument.empty() || (argument[0] != SENT && argument[0] != ANSWER))
        return argument;
    const std::size_t number = std::stoul(argument.substr(1));
    if (number >= exchanges.size())
        return "(no exchange " + std::to_string(number) + ")";
    return argument[0] == SENT ? exchanges[number].request : exchanges[number].reply;
}

Texts shown(const std::vector<Statement>& statements)
{
    Texts all;
    for (const auto& [level, unit, line, function, text] : statements)
        all.push_back(level + ' ' + unit + ':' + std::to_string(line) + ' ' + function + ' ' + text);
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
    std::vector<const Row*> found;
    for (const Row& row : rows()) {
        const std::string text = std::to_string(row.line) + '\t' + row.format + '\t' + row.meaning;
        if (row.function == key.substr(0, colon) && text.find(key.substr(colon + 2)) != std::string::npos)
            found.push_back(&row);
    }
    if (found.size() != 1 || literals(*found[0], 0).size() != arguments.size() + 1)
        throw std::runtime_error(std::to_string(found.size()) + " statements, or other arguments: " + key);
    return {found[0], arguments};
}

std::string sent(int exchange)
{
    return SENT + std::to_string(exchange);
}

std::string answer(int exchange)
{
    return ANSWER + std::to_string(exchange);
}

void expectSaid(const Trace& expected)
{
    const std::vector<Statement> file = fileStatements();
    const std::vector<Answered> told = exchanges();
    std::vector<Statement> lines;
    std::vector<Statement> entries;
    for (const auto& [row, texts] : expected) {
        if (row == nullptr) {
            lines.push_back({"=", "", 0, "", texts[0]});
            continue;
        }
        const std::size_t at = lines.size();
        const int line = lineOf(*row) == 0 && at < file.size() ? file[at].line : lineOf(*row);
        const Texts pieces = literals(*row, line);
        Statement one = {row->level, row->unit, line, "", pieces[0]};
        for (std::size_t i = 1; i < pieces.size(); ++i)
            one.text += looked(texts[i - 1], told) + pieces[i];
        lines.push_back(one);
        const bool is_there = at < file.size() && shown({one}) == shown({file[at]});
        EXPECT_TRUE(!is_there || see(*row, line)) << "the line of another statement: " << line << ' ' << one.text;
        one.function = row->function;
        addEntries(entries, one);
    }
    EXPECT_EQ(shown(file), shown(lines)) << "in the file";
    EXPECT_EQ(shown(journalStatements()), shown(entries)) << "in the journal";
    emptyLogFile();
}

void expectKnown()
{
    std::vector<Statement> entries;
    for (Statement& statement : fileStatements()) {
        const Row* row = rowOf(statement);
        EXPECT_NE(row, nullptr) << statement.unit << ':' << statement.line << ' ' << statement.text;
        statement.function = row == nullptr ? "" : row->function;
        addEntries(entries, statement);
    }
    EXPECT_EQ(shown(journalStatements()), shown(entries)) << "in the journal";
}
