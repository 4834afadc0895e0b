#include "devkit/broker/replay/conclude.h"

#include "devkit/bwdrecord/pieces.h"
#include "devkit/recording/characters.h"

#include <algorithm>
#include <set>

namespace {

/** Behind `begin`, up to `end`; empty where `begin` is not. */
std::string between(
    const std::string& text, const std::string& begin, const std::string& end, std::size_t from = 0
)
{
    const std::size_t at = text.find(begin, from);
    if (at == std::string::npos) {
        return "";
    }
    return text.substr(at + begin.size(), text.find(end, at + begin.size()) - at - begin.size());
}

/** The value of an element, in a CDATA section or not. */
std::string element(const std::string& text, const std::string& name)
{
    std::string value = between(text, '<' + name + '>', "</" + name + '>');
    constexpr char CDATA[] = "<![CDATA[";
    if (value.starts_with(CDATA)) {
        value = value.substr(sizeof CDATA - 1, value.rfind("]]>") - sizeof CDATA + 1);
    }
    return value;
}

enum class Asked {
    Query,
    Add,
    Delete,
    Update,
    AddRemote,
    DeleteRemote,
    Owner,
    Unknown
};

Asked asked(const RecordedCall& call)
{
    const std::string& request = call.request.value_or("");
    const bool remote = request.find("resource-type=\"User:Remote:App\"") != std::string::npos;
    const auto has = [&](const char* tag) {
        return request.find(tag) != std::string::npos;
    };
    return has("<xs:query ")                   ? Asked::Query
           : has("<xs:add ")                   ? (remote ? Asked::AddRemote : Asked::Add)
           : has("<xs:delete ")                ? (remote ? Asked::DeleteRemote : Asked::Delete)
           : has("resource-id=\"CloudOwner\"") ? Asked::Owner
           : has("<xs:set ")                   ? Asked::Update
                                               : Asked::Unknown;
}

bool succeeded(const RecordedCall& call)
{
    return call.reply.value_or("").find("status=\"success\"") != std::string::npos;
}

/** Takes the accounts of a query's reply that are not known and were not added. */
void take_accounts(Facts& facts, const std::string& reply, const std::set<std::string>& added)
{
    for (std::size_t at = 0; (at = reply.find("<User ", at)) != std::string::npos; ++at) {
        const std::string record = reply.substr(at, reply.find("</User>", at) - at);
        const std::string id = element(record, "User_Id");
        const std::string name = element(record, "User_Name");
        const bool is_number = !id.empty() && id.size() < 10 &&
                               id.find_first_not_of("0123456789") == std::string::npos;
        if (!is_number || added.contains(name) || facts.contains({"account", id})) {
            continue;
        }
        const std::string group = as_characters(element(record, "Group_Name"));
        facts[{"account", id}] = {
            {"name", as_characters(name)},
            {"group", group},
            {"email", as_characters(element(record, "Email_Address"))},
            {"p2p_user_name", as_characters(element(record, "P2PUserName"))},
            {"locked", element(record, "IsLocked") == "1"},
        };
        facts.try_emplace({"group", group}, nullptr);
    }
}

void number_groups(Facts& facts)
{
    int id = 2000;
    for (const char* name : {"admin", "sky-hold", "share"}) {
        facts.try_emplace({"group", name}, nullptr);
    }
    for (auto& [name, value] : facts) {
        if (name.first == "group") {
            value = id++;
        }
    }
}

std::string owner_of(const Facts& state)
{
    const auto file = state.find({"owner file", ""});
    return file == state.end() ? ""
                               : between(as_bytes(file->second.get<std::string>()), "<owner>", "<");
}

/** One process's bare calls, taken apart into commands. */
class Concluder {
  public:
    Concluder(const RecordedCommand& bare, const std::string& owner, const std::string& file)
        : bare_(bare), owner_(owner), file_(file)
    {
    }

    std::vector<RecordedCommand> commands()
    {
        while (at_ < bare_.calls.size()) {
            switch (asked(bare_.calls[at_])) {
            case Asked::Owner:
                add({"unregister"}, 1);
                break;
            case Asked::AddRemote:
                add({"addremoteuser", attribute(at_)}, 1);
                break;
            case Asked::Query:
                add_or_delete();
                break;
            default:
                refuse();
            }
        }
        return std::move(commands_);
    }

  private:
    bool is(std::size_t at, Asked what) const
    {
        return at < bare_.calls.size() && asked(bare_.calls[at]) == what;
    }
    const std::string& request(std::size_t at) const { return *bare_.calls[at].request; }
    std::string attribute(std::size_t at) const
    {
        return between(request(at), " UserName=\"", "\"");
    }

    /** A query for a name, a deletion perhaps, and then the addition of that name or none. */
    void add_or_delete()
    {
        const std::string name = element(request(at_), "xs:value");
        std::size_t end = at_ + 1;
        const bool deleted = is(end, Asked::Delete);
        end += deleted ? 1 : 0;
        std::string remote = name;
        if (is(end, Asked::DeleteRemote)) {
            remote = attribute(end++);
        }
        if (is(end, Asked::Add) && name.starts_with(element(request(end), "User_Name"))) {
            return add(
                {"adduser", name, PAIR_STAND_IN, element(request(end), "Email_Address")},
                end + 1 - at_
            );
        }
        if (end == at_ + 1) {
            refuse();
        }
        add({"deleteuser", name, remote}, end - at_);
    }

    void add(std::vector<std::string> words, std::size_t count)
    {
        RecordedCommand& command = commands_.emplace_back(bare_);
        const auto first = bare_.calls.begin() + static_cast<std::ptrdiff_t>(at_);
        command.words = std::move(words);
        command.login = owner_;
        command.log_level = 3;
        command.line = first->line;
        command.time = first->time;
        command.calls.assign(first, first + static_cast<std::ptrdiff_t>(count));
        at_ += count;
    }

    [[noreturn]] void refuse() const
    {
        throw BadRecording(
            file_ + ':' + std::to_string(bare_.calls[at_].line) +
            ": only transactions are recorded, and no command follows from this one: expected "
            "those of "
            "adduser, deleteuser, addremoteuser or unregister; broker --record records commands"
        );
    }

    const RecordedCommand& bare_;
    const std::string& owner_;
    const std::string& file_;
    std::size_t at_ = 0;
    std::vector<RecordedCommand> commands_;
};

} // namespace

Facts concluded_state(const Recording& recording)
{
    Facts facts;
    std::set<std::string> added;
    std::string owner = "owner";
    for (const RecordedCommand& command : recording.commands) {
        for (const RecordedCall& call : command.calls) {
            const std::string request = call.request.value_or("");
            if (asked(call) == Asked::Query && succeeded(call)) {
                take_accounts(facts, *call.reply, added);
            } else if (asked(call) == Asked::Add && succeeded(call)) {
                added.insert(element(request, "User_Name"));
            } else if (request.starts_with("Authorization: ") && owner == "owner") {
                owner = between(request, "Authorization: ", "\r\n");
            }
        }
    }
    number_groups(facts);
    facts[{"owner file", ""}] = as_characters(
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><registration><owner>" + owner +
        "</owner></registration>"
    );
    return facts;
}

Recording with_commands(const Recording& recording, const Facts& state, const std::string& name)
{
    const std::string owner = owner_of(state);
    Recording named = recording;
    named.commands.clear();
    for (const RecordedCommand& command : recording.commands) {
        if (!command.words.empty()) {
            named.commands.push_back(command);
            continue;
        }
        for (RecordedCommand& concluded : Concluder(command, owner, name).commands()) {
            named.commands.push_back(std::move(concluded));
        }
    }
    return named;
}
