#include "devkit/broker/check/row.h"

#include <algorithm>

namespace {

constexpr std::size_t NAME_WIDTH = 18;

/** What a file says may hold anything: a terminal gets no control character. */
std::string shown(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, '?'
    );
    return text;
}

std::string line(const std::string& name, const std::string& text)
{
    return name + std::string(NAME_WIDTH - std::min(NAME_WIDTH - 1, name.size()), ' ') +
           shown(text) + '\n';
}

} // namespace

std::string joined(const Texts& texts, const char* between, std::size_t most)
{
    std::string all;
    for (std::size_t i = 0; i < texts.size() && i < most; ++i) {
        all += (i == 0 ? "" : between) + texts[i];
    }
    if (texts.size() > most) {
        all += " and " + std::to_string(texts.size() - most) + " more";
    }
    return all.empty() ? "none" : all;
}

std::size_t findings(const Report& report)
{
    return static_cast<std::size_t>(std::count_if(
        report.rows.begin(), report.rows.end(),
        [](const Row& row) { return row.finding.has_value(); }
    ));
}

std::string for_people(const Report& report)
{
    std::string table;
    std::string explained;
    for (const Row& row : report.rows) {
        table += (row.finding ? "!! " : "ok ") + line(row.name, row.found);
        if (row.finding) {
            explained += '\n' + line(row.name, row.finding->wrong) +
                         line("  why", row.finding->why) + line("  mend", row.finding->mend);
        }
    }
    const std::size_t count = findings(report);
    const std::string verdict = count == 0   ? "no finding"
                                : count == 1 ? "1 finding"
                                             : std::to_string(count) + " findings";
    return table + explained + '\n' + shown(report.library) + ": " + verdict +
           (report.profile.empty() ? "" : " by the profile " + report.profile) + '\n';
}

nlohmann::ordered_json as_json(const Report& report)
{
    using Json = nlohmann::ordered_json;
    Json rows = Json::array();
    for (const Row& row : report.rows) {
        Json finding;
        if (row.finding) {
            finding = {
                {"wrong", row.finding->wrong},
                {"why", row.finding->why},
                {"mend", row.finding->mend}};
        }
        rows.push_back({{"row", row.name}, {"found", row.found}, {"finding", finding}});
    }
    return {
        {"library", report.library},
        {"profile", report.profile.empty() ? Json() : Json(report.profile)},
        {"findings", findings(report)},
        {"rows", rows},
    };
}
