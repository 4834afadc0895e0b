#include "bench/table.h"

#include <algorithm>
#include <cstdio>

namespace {

const char* mark(const Row& row)
{
    if (row.goal == 0) {
        return "reported";
    }
    if (row.ratio <= row.goal) {
        return "met";
    }
    return meetsGoal(row) ? "met (spread)" : "MISSED";
}

} // namespace

void printHead()
{
    std::printf(
        "%-44s %-28s %6s %-15s %5s  %s\n", "case", "against", "ratio", "[quartiles]", "goal", ""
    );
}

void print(const Row& row)
{
    char spread[32] = "";
    if (row.low != row.high) {
        std::snprintf(spread, sizeof spread, "[%.2f, %.2f]", row.low, row.high);
    }
    char goal[16] = "";
    if (row.goal != 0) {
        std::snprintf(goal, sizeof goal, "%.2f", row.goal);
    }
    std::printf(
        "%-44s %-28s %6.3f %-15s %5s  %s%s%s\n", row.name.c_str(), row.against.c_str(), row.ratio,
        spread, goal, mark(row), row.remark.empty() ? "" : ": ", row.remark.c_str()
    );
    std::fflush(stdout);
}

void printSummary(const Table& table)
{
    const auto goals =
        std::count_if(table.begin(), table.end(), [](const Row& row) { return row.goal != 0; });
    const auto missed =
        std::count_if(table.begin(), table.end(), [](const Row& row) { return !meetsGoal(row); });
    std::printf("%td of %td goals met\n", goals - missed, goals);
}
