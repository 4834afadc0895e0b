#include "devkit/broker/replay/replay.h"

#include "devkit/broker/plugin.h"
#include "devkit/broker/record/device_state.h"
#include "devkit/broker/record/log_file.h"
#include "devkit/broker/record/redaction.h"
#include "devkit/broker/replay/comparison.h"
#include "devkit/broker/replay/conclude.h"
#include "devkit/broker/replay/player.h"
#include "devkit/broker/replay/stage.h"
#include "devkit/broker/replay/unified_diff.h"
#include "devkit/broker/report.h"
#include "devkit/recording/characters.h"

#include <algorithm>

namespace {

/** The words, as a person would read them. */
std::string words_of(const RecordedCommand& command)
{
    std::string text;
    for (const std::string& word : command.words) {
        text += (text.empty() ? "" : " ") + (word.empty() ? "''" : as_characters(word));
    }
    return text;
}

Command command_of(const RecordedCommand& recorded)
{
    Command command = {recorded.words, std::nullopt, recorded.log_level};
    if (recorded.login) {
        command.credentials = *recorded.login + ':';
    }
    return command;
}

/** The whole of a text or nothing can be played. */
void expect_texts(const Recording& recording, const std::string& name)
{
    for (const RecordedCommand& command : recording.commands) {
        for (const RecordedCall& call : command.calls) {
            if (!call.request || (!call.reply && call.reply_length > 0)) {
                throw BadRecording(
                    name + ':' + std::to_string(call.line) + ": the " +
                    (call.request ? "reply" : "request") +
                    " was too long to be recorded: expected its text"
                );
            }
        }
    }
}

/** What the plug-in has said and changed, in the recording's names. */
Performance performance_of(
    const Answer& answer,
    const Player& player,
    const Redaction& redaction,
    std::uint64_t log,
    const Facts& before
)
{
    const auto recorded = [&](const std::string& text) {
        return player.renaming().as_recorded(redaction.text(text));
    };
    Performance made;
    made.requests = player.made();
    made.statements = statements_behind(log);
    for (RecordedStatement& statement : *made.statements) {
        statement.text = recorded(statement.text);
    }
    for (const FactChange& change : changes_between(before, device_state())) {
        // As one text, in which a name is replaced wherever it stands.
        const nlohmann::json values = {redaction.change(change).from, redaction.change(change).to};
        const auto renamed = nlohmann::json::parse(player.renaming().as_recorded(values.dump()));
        made.changes.push_back({change.what, change.key, renamed[0], renamed[1]});
    }
    const std::optional<std::string> response = response_of(answer);
    made.answer = {
        code_name(answer.code), response ? std::optional(recorded(*response)) : std::nullopt, 0};
    return made;
}

Replayed replay_one(
    const RecordedCommand& recorded,
    bool keyed,
    const Facts& state,
    const Plugin& plugin,
    const std::string& name
)
{
    set_stage(state);
    const Command command = command_of(recorded);
    const Redaction redaction(command);
    const Facts before = device_state();
    const std::uint64_t log = end_of_log().value_or(0);
    Player player(recorded, keyed);
    const Answer answer = plugin.run(command);
    Performance made = performance_of(answer, player, redaction, log, before);
    if (!end_of_log()) {
        made.statements.reset();
    }
    const Performance expected = recorded_performance(recorded);
    return {
        words_of(recorded), recorded.line,
        unified_diff(
            lines_of(expected, made), lines_of(made, expected),
            name + ':' + std::to_string(recorded.line), "replayed"
        )};
}

} // namespace

std::vector<Replayed>
replay_recording(const std::string& text, const std::string& name, const std::string& against)
{
    Recording recording = parse_recording(text, name);
    expect_answers(recording, name);
    expect_texts(recording, name);
    const Facts concluded = concluded_state(recording);
    recording = with_commands(recording, concluded, name);
    Player::take_the_daemons_place();
    const Plugin plugin(against);
    std::vector<Replayed> replayed;
    Facts state = concluded;
    for (const RecordedCommand& command : recording.commands) {
        replayed.push_back(replay_one(
            command, recording.keyed, command.before ? *command.before : state, plugin, name
        ));
        state = device_state(); // of which the next one, where it tells no state, goes on
    }
    return replayed;
}

std::string for_people(const std::vector<Replayed>& commands)
{
    std::string text;
    for (const Replayed& command : commands) {
        text += command.command + (command.difference.empty() ? ": as recorded\n" : ": differs\n");
        for (const std::string& line : command.difference) {
            text += line + '\n';
        }
    }
    const auto differing = std::count_if(commands.begin(), commands.end(), [](const auto& command) {
        return !command.difference.empty();
    });
    return text + std::to_string(commands.size()) +
           (commands.size() == 1 ? " command, " : " commands, ") + std::to_string(differing) +
           " not as recorded\n";
}

nlohmann::ordered_json as_json(const std::vector<Replayed>& commands)
{
    auto all = nlohmann::ordered_json::array();
    for (const Replayed& command : commands) {
        all.push_back({
            {"command", command.command},
            {"line", command.line},
            {"as_recorded", command.difference.empty()},
            {"difference", command.difference},
        });
    }
    return all;
}

bool as_recorded(const std::vector<Replayed>& commands)
{
    return std::all_of(commands.begin(), commands.end(), [](const Replayed& command) {
        return command.difference.empty();
    });
}
