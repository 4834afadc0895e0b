// The table of statements itself, and what docs/log.md tells of it.
#include "tests/syscmd/statements.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

namespace {

/** A format as a document shows it. */
std::string shown(const Row& row)
{
    return "`" + row.format.substr(0, row.format.find('\n')) + "`";
}

/** The lines of each function whose statements are known by them. */
std::string byLines()
{
    std::string text;
    for (auto row = rows().begin(); row != rows().end();) {
        const auto first = row;
        while (row != rows().end() && row->function == first->function)
            ++row;
        std::set<int> lines;
        for (auto each = first; each != row; ++each)
            lines.insert(each->line);
        if (*lines.rbegin() != 0)
            text += "| " + std::to_string(*lines.upper_bound(0)) + "–" + std::to_string(*lines.rbegin()) + " | `" +
                    first->function + "` | `" + first->unit + "` |\n";
    }
    return text;
}

std::string harmless()
{
    std::string text;
    for (const Row& row : rows())
        if (row.level == "ERROR" && row.remedy.starts_with("nothing: "))
            text += "| " + shown(row) + " | " + row.meaning + "; " + row.remedy.substr(9) + " |\n";
    return text;
}

std::string inTheFileOnly()
{
    std::string text;
    for (const Row& row : rows())
        if (row.format.find('\n') == std::string::npos)
            text += "- " + row.level + " " + shown(row) + "\n";
    return text;
}

TEST(Statements, areToldInTheDocument)
{
    std::ifstream file(LOG_DOCUMENT);
    const std::string document{std::istreambuf_iterator<char>(file), {}};
    for (const std::string& part : {byLines(), harmless(), inTheFileOnly()})
        EXPECT_NE(document.find("\n" + part + "\n"), std::string::npos) << part;
}

TEST(Statements, areWellFormed)
{
    std::set<int> lines;
    for (const Row& row : rows()) {
        EXPECT_TRUE(row.level == "ERROR" || row.level == "INFO" || row.level == "DEBUG") << row.format;
        EXPECT_TRUE(row.line == 0 || lines.insert(row.line).second) << row.line;
        const std::string seen_by = row.seen_by.substr(0, row.seen_by.find_first_of(": "));
        EXPECT_TRUE((
            std::set<std::string>{"operations_test", "operations_test_strict", "routines_test", "faults_test", "nobody"}
                .count(seen_by)))
            << row.format;
        EXPECT_FALSE(row.meaning.empty() || row.remedy.empty()) << row.format;
    }
}

} // namespace
