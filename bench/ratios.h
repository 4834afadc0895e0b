/** The ratios of an earlier run, which are committed, and what has become worse since. */
#pragma once

#include "bench/table.h"

#include <string>
#include <vector>

/** What a file of ratios holds. */
struct KeptRatios {
    Table rows;               // none where there is trouble
    std::string trouble = ""; // a sentence: why the file cannot be used
};

/** Reads what writeRatios() has written. */
KeptRatios readRatios(const std::string& path);

/**
 * Writes a head and a line a row: case, against, ratio, lower and upper quartile, goal, by
 * tabulators.
 *
 * @return whether all of it could be written; errno tells why not
 */
bool writeRatios(const std::string& path, const Table& table);

/**
 * Compares a run with an earlier one.
 *
 * A ratio of times has become worse when its lower quartile is above the earlier upper one and its
 * median is more than 2 % above the earlier: beyond the spread of both runs, and beyond what is
 * worth looking at. A count has when it is larger at all.
 *
 * @return a line for each row that has become worse and for each that the earlier run has not; when
 *         none has become worse a line that says so
 */
std::vector<std::string> compareRatios(const Table& now, const Table& earlier);

/** Prints compareRatios() of the run and the file, or why the file cannot be used. */
void printRegressions(const Table& now, const std::string& path);
