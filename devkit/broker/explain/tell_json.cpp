#include "devkit/broker/explain/tell.h"

namespace {

using Json = nlohmann::ordered_json;

Json or_null(const std::string& text)
{
    return text.empty() ? Json() : Json(text);
}

Json as_json(const Event& event, const Story& story)
{
    const Said& said = event.said;
    Json values = Json::array();
    for (const Value& value : said.values) {
        values.push_back({{"name", or_null(value.label)}, {"value", value.text}});
    }
    return {
        {"level", said.row->level},
        {"unit", said.row->unit},
        {"line", said.line},
        {"function", said.row->function},
        {"meaning", meaning_of(said, story)},
        {"values", values},
        {"remedy", said.row->remedy},
        {"cut", said.cut},
    };
}

} // namespace

Json as_json(const Explained& explained)
{
    const Story& story = explained.story;
    Json statements = Json::array();
    for (const Event& event : story.events()) {
        statements.push_back(as_json(event, story));
    }
    Json recipes = Json::array();
    for (const Recipe* recipe : explained.recipes) {
        recipes.push_back(
            {{"recipe", recipe->name},
             {"lost", recipe->what},
             {"when", recipe->when},
             {"remedy", recipe->remedy}}
        );
    }
    return {
        {"time", or_null(story.time())},
        {"process", or_null(story.process())},
        {"as", story.tells_requester() ? Json(story.login()) : Json()},
        {"requester", !story.tells_requester() ? Json()
                      : story.is_owner()       ? Json("owner")
                      : story.is_member()      ? Json("member")
                                               : Json("neither")},
        {"operations", story.operations()},
        {"asked_for", or_null(story.asked_for())},
        {"account", or_null(story.account())},
        {"new_name", or_null(story.new_name())},
        {"outcome", outcome_of(story)},
        {"guessed", story.guessed()},
        {"daemon", story.reason_known() ? Json(story.reason()) : Json()},
        {"statements", statements},
        {"recipes", recipes},
        {"to_do", remedies_of(explained)},
    };
}
