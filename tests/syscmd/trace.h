/** What is expected to be said, in terms of the table of statements, compared with file and journal. */
#pragma once

#include "tests/syscmd/statements.h"

/** A row with its arguments, or an effect between statements: "code 0", "response success". */
struct Said {
    Said(const char* effect) : texts{effect} {}
    Said(const std::string& effect) : texts{effect} {}
    Said(const Row* of, const Texts& arguments) : row(of), texts(arguments) {}
    const Row* row = nullptr;
    Texts texts;
};
using Trace = std::vector<Said>;

/** The row that `key` names, "function: piece": the one row of the function whose line, format or meaning
 * holds the piece. The arguments are those of the format's conversions, its own unit and line excepted. */
Said saidWith(const std::string& key, const Texts& arguments);
inline std::string argument(const std::string& text)
{
    return text;
}
inline std::string argument(int number)
{
    return std::to_string(number);
}
template<class... Arguments> Said said(const std::string& key, const Arguments&... arguments)
{
    return saidWith(key, {argument(arguments)...});
}

/** Arguments: request or reply of the daemon's n-th exchange; whatever matches an expression. */
std::string sent(int exchange);
std::string answer(int exchange);
std::string like(const std::string& expression);

/** Compares file and journal, each with what is expected; the statements that are as expected were seen. */
void expectSaid(const Trace& expected, int log_level = 7);
