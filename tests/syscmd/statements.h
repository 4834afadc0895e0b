/**
 * The log's statements, the rows of docs/statements.tsv, and which of them were seen. A program that
 * links this fails when a row that names it was not seen in a run of all its tests.
 */
#pragma once

#include <string>
#include <vector>

using Texts = std::vector<std::string>;

struct Row {
    std::string level, unit;
    int line; // 0: the statement's own source line
    std::string function, format, seen_by, meaning, remedy;
};
const std::vector<Row>& rows();

/** One log statement, as the journal or the file has it. */
struct Statement {
    std::string level; // "ERROR"; "=" for an effect that stands between the statements of the file
    std::string unit;
    int line = 0;
    std::string function; // the journal's only
    std::string text;
};

/** The statements of a log file, and the effects between them. */
std::vector<Statement> statementsOf(const std::string& log);

/** What stands around the conversions of the format, those of its own unit and line filled in. */
Texts literals(const Row& row, int line);

/** The row's line: given, or the one that it was seen at; else 0. */
int lineOf(const Row& row);

/** Takes note that the row was said at a line; whether that line is this row's and no other's. */
bool see(const Row& row, int line);

/** The row that a statement of the file is of, which then was seen; null: of none. */
const Row* rowOf(const Statement& statement);
