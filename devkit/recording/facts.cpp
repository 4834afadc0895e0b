#include "devkit/recording/facts.h"

namespace {

/** A value in words: texts as they are, of an object its members that say something. */
std::string in_words(const nlohmann::json& value)
{
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (!value.is_object()) {
        return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }
    std::string text;
    for (const auto& [name, member] : value.items()) {
        if (!member.empty() && member != "" && member != false) {
            text += (text.empty() ? "" : ", ") + name + ' ' + in_words(member);
        }
    }
    return text;
}

std::string line(char mark, const FactChange& change, const nlohmann::json& value)
{
    const std::string key = change.key.empty() ? "" : ' ' + change.key;
    return std::string(1, mark) + ' ' + change.what + key + ": " + in_words(value);
}

} // namespace

std::vector<FactChange> changes_between(const Facts& before, const Facts& after)
{
    Facts all = before;
    all.insert(after.begin(), after.end());
    std::vector<FactChange> changes;
    for (const auto& [name, value] : all) {
        const auto old_fact = before.find(name);
        const auto new_fact = after.find(name);
        const nlohmann::json from = old_fact == before.end() ? nlohmann::json() : old_fact->second;
        const nlohmann::json to = new_fact == after.end() ? nlohmann::json() : new_fact->second;
        if (from != to) {
            changes.push_back({name.first, name.second, from, to});
        }
    }
    return changes;
}

void apply_change(Facts& facts, const FactChange& change)
{
    if (change.to.is_null()) {
        facts.erase({change.what, change.key});
    } else {
        facts[{change.what, change.key}] = change.to;
    }
}

std::vector<std::string> for_people(const FactChange& change)
{
    std::vector<std::string> lines;
    if (!change.from.is_null()) {
        lines.push_back(line('-', change, change.from));
    }
    if (!change.to.is_null()) {
        lines.push_back(line('+', change, change.to));
    }
    return lines;
}
