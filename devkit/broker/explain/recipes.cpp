#include "devkit/broker/explain/recipes.h"

#include "devkit/broker/explain/table.h"
#include "devkit/broker/explain/tables.h"

#include <glib.h>

#include <algorithm>

namespace {

/** Whether a command made the statement "FUNCTION:TEXT", or one of that function that calls for
 * something when no text is given. */
bool said(const Story& story, std::string_view function, std::string_view text)
{
    return std::any_of(
        story.events().begin(), story.events().end(),
        [function, text](const Event& event) {
            const StatementRow& row = *event.said.row;
            return row.function == function &&
                   (text.empty() ? row.calls_for_something()
                                 : row.format.find(text) != std::string_view::npos);
        }
    );
}

/** Whether any of the alternatives holds, each of which is one condition or several. */
bool holds(std::string_view told, const Story& story, const std::set<std::string>& facts)
{
    const auto is_so = [&](std::string_view condition) {
        if (condition.starts_with('=')) {
            return facts.count(std::string(condition.substr(1))) != 0;
        }
        const auto colon = condition.find(':');
        return said(story, condition.substr(0, colon), condition.substr(colon + 1));
    };
    const Cells alternatives = pieces_between(told, " | ");
    return !told.empty() &&
           std::any_of(alternatives.begin(), alternatives.end(), [&](std::string_view alternative) {
               const Cells all = pieces_between(alternative, " + ");
               return std::all_of(all.begin(), all.end(), is_so);
           });
}

std::string lower(const std::string& name)
{
    const std::unique_ptr<char, decltype(&g_free)> text(
        g_ascii_strdown(name.data(), static_cast<gssize>(name.size())), g_free
    );
    return text.get();
}

/** Of a change, not of a query. */
bool is_refused_without_reason(const Story& story)
{
    return story.reason_known() && story.reason().empty() &&
           !said(story, "GetUserData", "MXL error");
}

bool failed_at_owner_file(const Story& story)
{
    constexpr std::string_view WORDS = "failed updating skyhold owner file";
    return said(story, "UpgradeUserToSSO", WORDS) || said(story, "UpdateUserHandler", WORDS);
}

} // namespace

const std::vector<Recipe>& recipes()
{
    static const auto all = [] {
        std::vector<Recipe> read;
        for (const Cells& cells : rows_of(RECIPES_TABLE)) {
            read.push_back(
                {cells.at(0), cells.at(1), cells.at(2), cells.at(3), cells.at(4), cells.at(5),
                 cells.at(6), cells.at(7)}
            );
        }
        return read;
    }();
    return all;
}

bool Memory::is_owners(const std::string& name) const
{
    return owners_.count(lower(name)) != 0 || renamed_.count(lower(name)) != 0;
}

std::set<std::string> Memory::facts_of(const Story& story)
{
    std::set<std::string> facts;
    const std::string login = lower(story.login());
    if (story.is_owner()) {
        if (!old_owner_.empty() && old_owner_ == login) {
            facts.insert("old owner admitted");
            old_owner_.clear(); // said once
        }
        owners_.insert(login);
    } else if (story.end() == End::Denied && owners_.count(login) != 0) {
        facts.insert("former owner denied");
    } else if (story.end() == End::Denied && renamed_.count(login) != 0) {
        facts.insert("renamed owner denied");
    }

    const bool owners_account =
        is_owners(story.account()) || (!story.p2p_name().empty() && is_owners(story.p2p_name()));
    if (owners_account || story.account().empty() || !story.tells_requester()) {
        facts.insert("owner");
    }
    if (owners_account && story.group() == "sky-hold") {
        facts.insert("owner in sky-hold");
    }
    if (story.account().empty() || story.account().find('@') != std::string::npos) {
        facts.insert("at sign");
    }
    if (is_refused_without_reason(story)) {
        facts.insert("refused without a reason");
    }
    for (const Event& event : story.events()) {
        const bool removed = event.said.row->format.find("REMOVE") != std::string_view::npos;
        if (removed && event.said.values.size() >= 2 &&
            !removed_.insert(event.said.values[0].text + ' ' + event.said.values[1].text).second) {
            facts.insert("removed again");
        }
    }
    if (owners_account && !story.new_name().empty()) {
        note_rename(story);
    }
    return facts;
}

/** The owner's account got another name, if the daemon did it. */
void Memory::note_rename(const Story& story)
{
    const std::string old_name = lower(story.account());
    const std::string new_name = lower(story.new_name());
    if (said(story, "UpgradeUserToSSO", "failed updating user account")) {
        return;
    }
    if (failed_at_owner_file(story)) {
        renamed_.insert(new_name);
        old_owner_ = old_name;
    } else if (story.end() != End::Failed) {
        if (owners_.erase(old_name) != 0) {
            owners_.insert(new_name);
        }
        renamed_.erase(new_name);
    }
}

std::vector<const Recipe*> recipes_for(const Story& story, const std::set<std::string>& facts)
{
    std::vector<const Recipe*> needed;
    for (const Recipe& recipe : recipes()) {
        if ((recipe.operation.empty() || story.may_be(recipe.operation)) &&
            holds(recipe.said, story, facts) && !holds(recipe.unless, story, facts)) {
            needed.push_back(&recipe);
        }
    }
    return needed;
}
