/** What is expected to be said, in terms of the table of statements, compared with file and journal. */
#pragma once

#include "tests/syscmd/statements.h"

/** A row with its arguments; without a row an effect between statements, "code 0" or "response success". */
struct Said {
    const Row* row;
    Texts texts;
};

/** What is expected, in order: statements, effects, and lists of them. */
struct Trace : std::vector<Said> {
    Trace() = default;
    Trace(const Said& said) : vector{said} {}
    Trace(const std::string& effect) : vector{{nullptr, {effect}}} {}
    Trace(const char* effect) : Trace(std::string(effect)) {}
    Trace(std::initializer_list<Trace> parts)
    {
        for (const Trace& part : parts)
            insert(end(), part.begin(), part.end());
    }
};

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

/** Arguments: request or reply of the daemon's n-th exchange. */
std::string sent(int exchange);
std::string answer(int exchange);

/** Compares file and journal, each with what is expected, and empties them; what is as expected was seen. */
void expectSaid(const Trace& expected);

/** What else file and journal hold are statements of the table. */
void expectKnown();
