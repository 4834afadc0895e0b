#include "devkit/broker/explain/tell.h"

#include <algorithm>

namespace {

/** Whether anything failed in a command. */
bool has_failure(const Story& story)
{
    const auto& events = story.events();
    return std::any_of(events.begin(), events.end(), [](const Event& event) {
        return event.said.row->calls_for_something();
    });
}

/** Of a deletion that has no last statement: it is answered with success whether it failed or not.
 */
bool is_silent_deletion(const Story& story)
{
    return story.is("deleteuser") && story.settled() && !story.ended();
}

/** Whether a remedy only points at another statement, which is told as well. */
bool is_pointer(std::string_view remedy)
{
    constexpr std::string_view POINTERS[] = {"nothing",
                                             "see the statement in front",
                                             "see the daemon's reason",
                                             "see the reply",
                                             "see docs/",
                                             "follow it"};
    return std::any_of(std::begin(POINTERS), std::end(POINTERS), [remedy](std::string_view text) {
        return remedy.starts_with(text);
    });
}

/** The row that a statement is of: of those that say the same the one that the reason tells. */
const StatementRow& row_of(const Said& said, const Story& story)
{
    const bool is_other = said.other != nullptr && story.reason_known() &&
                          story.reason().find("already exists") == std::string::npos;
    return is_other ? *said.other : *said.row;
}

} // namespace

std::string outcome_of(const Story& story)
{
    switch (story.end()) {
    case End::Succeeded:
        return "succeeded";
    case End::Failed:
        return "failed";
    case End::Refused:
        return "refused";
    case End::Denied:
        return "denied";
    case End::Open:
        break;
    }
    if (is_silent_deletion(story)) {
        return has_failure(story) ? "answered success" : "succeeded as far as is told";
    }
    return story.is_updated() ? "succeeded as far as is told" : "not told";
}

std::string meaning_of(const Said& said, const Story& story)
{
    const std::string meaning(row_of(said, story).meaning);
    const bool open = said.other != nullptr && !story.reason_known();
    return open ? meaning + ", or " + std::string(said.other->meaning) : meaning;
}

std::vector<std::string> remedies_of(const Explained& explained)
{
    std::vector<std::string> remedies;
    for (const Event& event : explained.story.events()) {
        const std::string remedy(row_of(event.said, explained.story).remedy);
        const bool is_new = std::find(remedies.begin(), remedies.end(), remedy) == remedies.end();
        if (event.said.row->is_error() && !is_pointer(remedy) && is_new) {
            remedies.push_back(remedy);
        }
    }
    return remedies;
}
