#include "tests/syscmd/statements.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <numeric>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace {

struct Sighting {
    int line;
    bool seen;
};

/** Shared with the processes that a test forks. */
Sighting& sighting(const Row& row)
{
    static void* const all =
        mmap(nullptr, rows().size() * sizeof(Sighting), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return static_cast<Sighting*>(all)[&row - rows().data()];
}

std::string replaced(std::string text, const std::string& what, const std::string& by)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

/** Whether the text is these pieces with something, or nothing, between each two. */
bool fits(const Texts& pieces, const std::string& text)
{
    std::size_t at = 0;
    for (const std::string& piece : pieces) {
        at = text.find(piece, at);
        if (at == std::string::npos)
            return false;
        at += piece.size();
    }
    return text.starts_with(pieces.front()) && (pieces.size() == 1 ? at == text.size() : text.ends_with(pieces.back()));
}

bool mayStandAt(const Row& row, int line)
{
    const int known = lineOf(row);
    return known != 0 ? known == line : std::none_of(rows().begin(), rows().end(), [&](const Row& other) {
        const int seen = other.unit == row.unit ? lineOf(other) : 0;
        // What reads the same stands in the table as in the unit.
        const bool alike = seen != 0 && other.function == row.function && other.format == row.format;
        return seen == line || (alike && (seen < line) != (&other < &row));
    });
}

/** Length of what the format says itself. */
std::size_t said(const Row& row)
{
    const Texts pieces = literals(row, 0);
    return std::accumulate(pieces.begin(), pieces.end(), std::string()).size();
}

/** After all tests: was everything seen that this program is to see? */
struct EverySeen : testing::Environment {
    void SetUp() override { sighting(rows().front()); }
    void TearDown() override
    {
        const testing::UnitTest& all = *testing::UnitTest::GetInstance();
        if (all.test_to_run_count() != all.total_test_count())
            return;
        const char* way = getenv("DEVICE_WAY");
        const bool can_pin = way != nullptr && std::string("root") == way;
        for (const Row& row : rows()) {
            const bool here = row.seen_by == program_invocation_short_name ||
                              (can_pin && row.seen_by == program_invocation_short_name + std::string(PINNING));
            EXPECT_TRUE(!here || sighting(row).seen) << "never said: " << row.function << ": " << row.format;
        }
    }
    static constexpr const char* PINNING = " where records can be pinned";
};
testing::Environment* const every_seen = testing::AddGlobalTestEnvironment(new EverySeen);

} // namespace

const std::vector<Row>& rows()
{
    static const std::vector<Row> all = [] {
        std::vector<Row> read;
        std::ifstream table(STATEMENTS);
        std::string line;
        std::getline(table, line);
        while (std::getline(table, line)) {
            Texts cells;
            std::istringstream parts(line);
            for (std::string cell; std::getline(parts, cell, '\t');)
                cells.push_back(cell);
            if (cells.size() != 8)
                throw std::runtime_error("not a row of eight cells: " + line);
            read.push_back({cells[0], cells[1], cells[2].empty() ? 0 : std::stoi(cells[2]), cells[3],
                replaced(cells[4], "\\n", "\n"), cells[5], cells[6], cells[7]});
        }
        return read;
    }();
    return all;
}

std::vector<Statement> statementsOf(const std::string& log)
{
    static const std::regex item(
        "[A-Z][a-z]{2} [ 0-9][0-9] [0-9]{4} [0-9:]{8} (ERROR|INFO|DEBUG):([^:]+):([0-9]+) |\n(=) ");
    std::vector<Statement> items;
    for (std::sregex_iterator at(log.begin(), log.end(), item), end; at != end; ++at) {
        const auto next = std::next(at);
        const auto from = static_cast<std::size_t>(at->position() + at->length());
        const auto to = next == end ? log.size() : static_cast<std::size_t>(next->position());
        const int line = (*at)[3].matched ? std::stoi(at->str(3)) : 0;
        items.push_back({at->str(1) + at->str(4), at->str(2), line, "", log.substr(from, to - from)});
    }
    return items;
}

Texts literals(const Row& row, int line)
{
    const std::string format = replaced(row.format, ":%s:%d", ":" + row.unit + ":" + std::to_string(line));
    Texts pieces(1);
    for (std::size_t at = 0; at < format.size(); ++at) {
        if (format[at] == '%') {
            at = format.find_first_of("sd", at);
            pieces.emplace_back();
        } else {
            pieces.back() += format[at];
        }
    }
    return pieces;
}

int lineOf(const Row& row)
{
    return row.line != 0 ? row.line : sighting(row).line;
}

bool see(const Row& row, int line)
{
    const bool is_its = mayStandAt(row, line);
    if (is_its)
        sighting(row) = {line, true};
    return is_its;
}

const Row* rowOf(const Statement& statement)
{
    const Row* of = nullptr; // the one that leaves least to arguments
    for (const Row& row : rows()) {
        const bool may_be = row.level == statement.level && row.unit == statement.unit &&
                            mayStandAt(row, statement.line) && fits(literals(row, statement.line), statement.text);
        if (may_be && (of == nullptr || said(row) > said(*of)))
            of = &row;
    }
    return of != nullptr && see(*of, statement.line) ? of : nullptr;
}
