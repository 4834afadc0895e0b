/** A command that a log tells of, in sentences or as JSON. */
#pragma once

#include "devkit/broker/explain/recipes.h"
#include "devkit/broker/explain/story.h"

#include <nlohmann/json.hpp>
#include <string>

/** A command and what it asks of whoever reads. */
struct Explained {
    const Story& story;
    std::vector<const Recipe*> recipes;
};

/** What a command came to: "succeeded", "failed", "denied", "refused", "answered success" (and yet
 * it failed), "succeeded as far as is told", "not told". */
std::string outcome_of(const Story& story);

/** What the table of statements asks for. */
std::vector<std::string> remedies_of(const Explained& explained);

/** What a statement means; of rows that say the same the one that the daemon's reason tells. */
std::string meaning_of(const Said& said, const Story& story);

/**
 * Several lines, of which the first tells who asked for what and what came of it.
 *
 * @param told  the recipes that were told in full, to which those of this command are added
 */
std::string for_people(const Explained& explained, std::set<const Recipe*>& told);

/** {"time", "process", "as", "requester", "operations": […], "account", "new_name", "outcome",
 * "guessed", "daemon": its reason, "statements": [{"level", "unit", "line", "function", "meaning",
 * "values": […], "remedy", "cut"}], "recipes": [{"recipe", "lost", "when", "remedy"}],
 * "to_do": […]}; what is not told is null. */
nlohmann::ordered_json as_json(const Explained& explained);
