#include "bench/ratios.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string_view>

namespace {

constexpr const char* HEAD = "case\tagainst\tratio\tlower\tupper\tgoal";
constexpr double WORTH_A_LOOK = 1.02;
/** Nine digits are kept of a ratio of counts: the next count of a hundred million shows. */
constexpr double AS_KEPT = 1 + 5e-9;

bool isCount(const Row& row)
{
    return row.low == row.high;
}

std::vector<std::string_view> fieldsOf(std::string_view line)
{
    std::vector<std::string_view> fields;
    for (std::size_t end = 0; (end = line.find('\t')) != std::string_view::npos;
         line.remove_prefix(end + 1)) {
        fields.push_back(line.substr(0, end));
    }
    fields.push_back(line);
    return fields;
}

bool toNumber(std::string_view text, double& number)
{
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && std::isfinite(number) && number >= 0;
}

bool toRow(std::string_view line, Row& row)
{
    constexpr std::size_t FIELDS = 6;
    const std::vector<std::string_view> fields = fieldsOf(line);
    if (fields.size() != FIELDS || fields[0].empty()) {
        return false;
    }
    row.name = fields[0];
    row.against = fields[1];
    return toNumber(fields[2], row.ratio) && toNumber(fields[3], row.low) &&
           toNumber(fields[4], row.high) && toNumber(fields[5], row.goal);
}

std::string inWords(const Row& row)
{
    char text[64];
    if (isCount(row)) {
        std::snprintf(text, sizeof text, "%.9g", row.ratio);
    } else {
        std::snprintf(text, sizeof text, "%.3f [%.3f, %.3f]", row.ratio, row.low, row.high);
    }
    return text;
}

bool isWorse(const Row& now, const Row& earlier)
{
    if (isCount(now) && isCount(earlier)) {
        return now.ratio > earlier.ratio * AS_KEPT;
    }
    return now.low > earlier.high && now.ratio > earlier.ratio * WORTH_A_LOOK;
}

} // namespace

KeptRatios readRatios(const std::string& path)
{
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) {
        return {{}, path + " cannot be read, or is empty"};
    }
    if (line != HEAD) {
        return {{}, path + " does not begin as a file of ratios"};
    }
    KeptRatios kept;
    for (std::size_t number = 2; std::getline(file, line); ++number) {
        Row row;
        if (!toRow(line, row)) {
            return {{}, path + ", line " + std::to_string(number) + ", is no ratio"};
        }
        kept.rows.push_back(std::move(row));
    }
    return kept;
}

bool writeRatios(const std::string& path, const Table& table)
{
    std::FILE* const file = std::fopen(path.c_str(), "we");
    if (file == nullptr) {
        return false;
    }
    std::fprintf(file, "%s\n", HEAD);
    for (const Row& row : table) {
        const int digits = isCount(row) ? 9 : 4;
        std::fprintf(
            file, "%s\t%s\t%.*g\t%.*g\t%.*g\t%g\n", row.name.c_str(), row.against.c_str(), digits,
            row.ratio, digits, row.low, digits, row.high, row.goal
        );
    }
    const bool whole = std::ferror(file) == 0;
    return std::fclose(file) == 0 && whole;
}

std::vector<std::string> compareRatios(const Table& now, const Table& earlier)
{
    std::vector<std::string> lines;
    bool worse = false;
    for (const Row& row : now) {
        const std::string title = row.name + ", against " + row.against;
        const auto before = std::find_if(earlier.begin(), earlier.end(), [&](const Row& other) {
            return other.name == row.name && other.against == row.against;
        });
        if (before == earlier.end()) {
            lines.push_back("not among the committed ratios: " + title);
        } else if (isWorse(row, *before)) {
            worse = true;
            lines.push_back(
                "REGRESSION: " + title + ": " + inWords(row) + ", committed " + inWords(*before)
            );
        }
    }
    if (!worse) {
        lines.emplace_back("no regression beside the committed ratios");
    }
    return lines;
}

void printRegressions(const Table& now, const std::string& path)
{
    const KeptRatios kept = readRatios(path);
    if (!kept.trouble.empty()) {
        std::printf("regressions are not looked for: %s\n", kept.trouble.c_str());
        return;
    }
    for (const std::string& line : compareRatios(now, kept.rows)) {
        std::printf("%s\n", line.c_str());
    }
}
