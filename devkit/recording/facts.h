/**
 * What a recording tells of the device's state: facts, each about something (`what`) with a name
 * of its own (`key`). docs/formats-recording.md lists them with their values.
 */
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

/** The value of each fact, by what it is about and its key. */
using Facts = std::map<std::pair<std::string, std::string>, nlohmann::json>;

/** One fact that came, went or is another. */
struct FactChange {
    std::string what;
    std::string key;
    nlohmann::json from; // null: it was not there
    nlohmann::json to;   // null: it is no longer there
};

/** What turns one state into the other, in the order of facts. */
std::vector<FactChange> changes_between(const Facts& before, const Facts& after);

/** Makes the change in the state. */
void apply_change(Facts& facts, const FactChange& change);

/** The change for people, a line or two: `- WHAT KEY: VALUE` and `+ WHAT KEY: VALUE`. */
std::vector<std::string> for_people(const FactChange& change);
