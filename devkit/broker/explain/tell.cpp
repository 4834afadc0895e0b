#include "devkit/broker/explain/tell.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {

/** What a log says may hold anything: a terminal gets no control character. */
std::string shown(const std::string& text)
{
    std::string visible;
    for (const char c : text) {
        visible += std::iscntrl(static_cast<unsigned char>(c)) != 0 ? '?' : c;
    }
    return visible;
}

std::string named(const std::string& name)
{
    return name.empty() ? "an empty name" : shown(name);
}

/** As a sentence: a capital in front, a full stop behind. */
std::string sentence(std::string text)
{
    if (!text.empty()) {
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    }
    return text.ends_with('.') ? text : text + '.';
}

std::string requester_of(const Story& story)
{
    if (!story.tells_requester()) {
        return "somebody";
    }
    return named(story.login()) + (story.is_owner()    ? ", the owner,"
                                   : story.is_member() ? ", a member,"
                                                       : ", neither owner nor unlocked member,");
}

/** "adduser zoe", or what is known of that. */
std::string asked_for(const Story& story)
{
    std::string text;
    for (const std::string_view operation : story.operations()) {
        text += (text.empty() ? "" : " or ") + std::string(operation);
    }
    if (story.operations().size() == OPERATIONS.size()) {
        text = story.asked_for().empty() ? "an operation that the log does not tell"
                                         : '"' + shown(story.asked_for()) + '"';
        const bool may_be_session = story.events().size() == 1 && story.tells_requester() &&
                                    !story.ended() && !story.process().empty();
        text += may_be_session ? " (as of initlocalsession in the journal)" : "";
    }
    text += story.account().empty() ? "" : ' ' + shown(story.account());
    const bool renamed = !story.new_name().empty() && story.new_name() != story.account();
    return text + (renamed ? " to " + shown(story.new_name()) : "");
}

std::string came_of_it(const Story& story)
{
    const std::string outcome = outcome_of(story);
    if (outcome == "not told") {
        return "What came of it is not in the log.";
    }
    if (outcome == "answered success") {
        return "It failed, and was answered with success.";
    }
    if (outcome == "succeeded as far as is told") {
        return "It succeeded, as far as the log tells.";
    }
    return outcome == "denied" || outcome == "refused" ? "It was " + outcome + '.'
                                                       : "It " + outcome + '.';
}

std::string heading(const Story& story)
{
    const std::string process = story.process().empty() ? "" : " [" + story.process() + ']';
    const std::string when = shown(story.time()) + process;
    return when + (when.empty() ? "" : ": ") + requester_of(story) + " asked for " +
           asked_for(story) + ". " + came_of_it(story) + '\n';
}

std::string as_text(const Value& value, bool is_only)
{
    const bool is_clear = is_only || value.label == "status" || value.label == "reason";
    std::string text = value.label.empty() || is_clear ? "" : value.label + ' ';
    text += value.text.empty() ? "(empty)" : shown(value.text);
    if (value.label == "errno") {
        text += std::string(" (") + std::strerror(std::atoi(value.text.c_str())) + ')';
    }
    return text;
}

/** Whether a statement says what the heading does not: neither who asks nor a request. */
bool is_told(const Event& event)
{
    const std::string_view format = event.said.row->format;
    const bool is_request = event.said.values.empty() && !event.said.row->conversions.empty() &&
                            event.said.row->level == "DEBUG";
    return !tells_who_asks(*event.said.row) && !is_request &&
           format.find("syscmd:request=") == std::string_view::npos;
}

std::string told(const Event& event, const Story& story)
{
    const Said& said = event.said;
    std::string text = meaning_of(said, story);
    const char* between = ": ";
    for (const Value& value : said.values) {
        if (said.row->function != "AuthenticateUser") { // of which the heading tells
            text += between + as_text(value, said.values.size() == 1);
            between = ", ";
        }
    }
    text += said.cut ? " (the statement is cut)" : "";
    return "  " + sentence(text) + " [" + std::string(said.row->unit) + ':' +
           std::to_string(said.line) + "]\n";
}

std::string told(const Recipe& recipe, bool certain, bool is_new)
{
    const std::string what =
        std::string(certain ? "  Wrong now: " : "  Perhaps wrong now: ") + std::string(recipe.what);
    return is_new ? what + ".\n    When: " + std::string(recipe.when) +
                        ".\n    To do: " + std::string(recipe.remedy) + ".\n"
                  : what + " (see above).\n";
}

} // namespace

std::string for_people(const Explained& explained, std::set<const Recipe*>& told_before)
{
    const Story& story = explained.story;
    std::string text = heading(story);
    for (const Event& event : story.events()) {
        text += is_told(event) ? told(event, story) : "";
    }
    if (story.guessed()) {
        text += "  Other commands ran meanwhile; some of these statements may be theirs.\n";
    }
    for (const Recipe* recipe : explained.recipes) {
        text += told(*recipe, explained.recipes.size() == 1, told_before.insert(recipe).second);
    }
    for (const std::string& remedy : remedies_of(explained)) {
        text += "  To do: " + remedy + ".\n";
    }
    const bool failed = story.ended() && story.end() != End::Succeeded;
    return text + (explained.recipes.empty() && failed ? "  Nothing is known to be lost.\n" : "");
}
