/** The table that a run ends with. */
#pragma once

#include <string>
#include <vector>

/** One case's outcome. */
struct Row {
    std::string name;
    std::string against;
    double ratio = 0;        // ours / peer, the median
    double low = 0;          // its lower quartile
    double high = 0;         // its upper quartile
    double goal = 0;         // 0: none
    std::string remark = ""; // the counts behind a ratio
};

using Table = std::vector<Row>;

/** A miss within the measured spread counts as met. */
inline bool meetsGoal(const Row& row)
{
    return row.goal == 0 || row.ratio <= row.goal || row.low <= row.goal;
}

void print(const Row& row);
void printHead();
/** One line: how many goals were met. */
void printSummary(const Table& table);
