#include "devkit/broker/page/page.h"

#include "devkit/broker/command.h"
#include "devkit/broker/explain/statement.h"
#include "devkit/broker/page/page_html.h" // made from page.html
#include "devkit/broker/page/placing.h"
#include "devkit/broker/page/transaction_text.h"
#include "devkit/recording/characters.h"

#include <glib.h>

#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <unordered_map>

namespace {

using Json = nlohmann::ordered_json;

/** Texts, each once: most lines of transactions are those of other ones, too. */
class Texts {
  public:
    std::size_t index(const std::string& text)
    {
        const auto [entry, is_new] = indices_.emplace(text, all_.size());
        if (is_new) {
            all_.push_back(as_characters(text));
        }
        return entry->second;
    }
    Json index_of(const std::optional<std::string>& text)
    {
        return text ? Json(index(*text)) : Json();
    }
    Json all() const { return all_; }

  private:
    std::unordered_map<std::string, std::size_t> indices_;
    std::vector<std::string> all_;
};

/** A fact's value as people read it. */
std::string value_text(const nlohmann::json& value)
{
    return value.is_string() ? value.get<std::string>() : value.dump();
}

/** A fact's value, or null where there is none. */
Json value_of(Texts& texts, const nlohmann::json& value)
{
    return value.is_null() ? Json() : Json(texts.index(value_text(value)));
}

Json lines_of(Texts& texts, const std::optional<std::string>& transaction)
{
    if (!transaction) {
        return {};
    }
    Json lines = Json::array();
    for (const std::string& line : laid_out(*transaction)) {
        lines.push_back(texts.index(line));
    }
    return lines;
}

Json call_json(Texts& texts, const RecordedCall& call)
{
    const bool failed = call.result != 0;
    return {
        {"microseconds", call.microseconds},
        {"error", failed ? Json(texts.index(std::strerror(call.error))) : Json()},
        {"kind", texts.index(kind_of(call.request.value_or("")))},
        {"summary", texts.index(call.request ? summary_of(*call.request) : "a request")},
        {"outcome", texts.index(call.reply ? outcome_of(*call.reply) : "")},
        {"request", lines_of(texts, call.request)},
        {"request_length", call.request_length},
        {"reply", lines_of(texts, call.reply)},
        {"reply_length", call.reply_length},
    };
}

Json statements_json(Texts& texts, const RecordedCommand& command)
{
    Json all = Json::array();
    const std::vector<std::size_t> places = places_of(command);
    for (std::size_t i = 0; i < places.size(); ++i) {
        const RecordedStatement& statement = (*command.statements)[i];
        const std::string text =
            statement.text.substr(0, statement.text.find_last_not_of('\n') + 1);
        const auto said = statement_of({statement.level, statement.unit, statement.line}, text);
        const auto cell = [&](std::string_view StatementRow::*column) {
            return said ? Json(texts.index(std::string(said->row->*column))) : Json();
        };
        all.push_back(
            {{"level", texts.index(statement.level)},
             {"unit", texts.index(statement.unit)},
             {"line", statement.line},
             {"text", texts.index(text)},
             {"meaning", cell(&StatementRow::meaning)},
             {"remedy", cell(&StatementRow::remedy)},
             {"at", places[i]}}
        );
    }
    return all;
}

Json facts_json(Texts& texts, const Facts& facts)
{
    Json all = Json::array();
    for (const auto& [name, value] : facts) {
        all.push_back({texts.index(name.first), texts.index(name.second), value_of(texts, value)});
    }
    return all;
}

Json answer_json(Texts& texts, const std::optional<RecordedAnswer>& answer)
{
    if (!answer) {
        return {};
    }
    return {
        {"code", texts.index(answer->code)},
        {"response", texts.index_of(answer->response)},
        {"carried_out", answer->code == "CODE_SUCCEED" || answer->code == "CODE_NOREPLY"},
        {"microseconds", answer->microseconds},
    };
}

/** @param known  the state as the commands so far have left it */
Json command_json(Texts& texts, const RecordedCommand& command, std::optional<Facts>& known)
{
    const bool told = command.before && command.before != known;
    Json json = {
        {"words", Json::array()},
        {"login", texts.index_of(command.login)},
        {"time", command.time},
        {"calls", Json::array()},
        {"statements", statements_json(texts, command)},
        {"before", told ? facts_json(texts, *command.before) : Json()},
        {"changes", Json::array()},
        {"answer", answer_json(texts, command.answer)},
    };
    for (const std::string& word : command.words) {
        json["words"].push_back(texts.index(word));
    }
    for (const RecordedCall& call : command.calls) {
        json["calls"].push_back(call_json(texts, call));
    }
    known = command.before ? command.before : known;
    for (const FactChange& change : command.changes) {
        json["changes"].push_back(
            {texts.index(change.what), texts.index(change.key), value_of(texts, change.from),
             value_of(texts, change.to)}
        );
        if (known) {
            apply_change(*known, change);
        }
    }
    return json;
}

/** JSON as a script element may hold it: nothing in it ends the element or begins a remark. */
std::string without_markup(const std::string& json)
{
    std::string text;
    for (const char c : json) {
        if (c == '<') {
            text += "\\u003c";
        } else {
            text += c;
        }
    }
    return text;
}

} // namespace

std::string page_of(const Recording& recording, const std::string& name)
{
    Texts texts;
    Json data = {
        {"file", as_characters(name)}, {"keyed", recording.keyed}, {"commands", Json::array()}};
    std::optional<Facts> known;
    for (const RecordedCommand& command : recording.commands) {
        data["commands"].push_back(command_json(texts, command, known));
    }
    data["texts"] = texts.all();
    std::string page = PAGE_HTML;
    const std::string mark = "@"
                             "DATA"
                             "@";
    return page.replace(page.find(mark), mark.size(), without_markup(data.dump()));
}

void write_page(const std::string& path, const std::string& page)
{
    errno = 0;
    if (g_file_set_contents(path.c_str(), page.data(), static_cast<gssize>(page.size()), nullptr) ==
        FALSE) {
        throw BadUse("cannot write " + path + ": " + std::strerror(errno));
    }
}
