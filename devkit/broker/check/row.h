/** The rows of a check, and how they are shown. */
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

struct Finding {
    std::string wrong;
    std::string why;
    std::string mend;
};

struct Row {
    std::string name;
    std::string found;
    std::optional<Finding> finding;
};

struct Report {
    std::string library;
    std::string profile; // empty: none fits
    std::vector<Row> rows;
};

/** The texts with `between` between them, of more than `most` the number of the rest; or "none". */
std::string joined(const Texts& texts, const char* between = " ", std::size_t most = 12);

std::size_t findings(const Report& report);

/** A line a row, then each finding in full. */
std::string for_people(const Report& report);

/** {"library", "profile": name or null, "findings": N, "rows": [{"row", "found", "finding": null or
 * {"wrong", "why", "mend"}}]} */
nlohmann::ordered_json as_json(const Report& report);
