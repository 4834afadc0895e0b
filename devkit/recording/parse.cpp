#include "devkit/bwdrecord/format.h"
#include "devkit/recording/characters.h"
#include "devkit/recording/recording.h"

#include <map>

namespace {

using Json = nlohmann::json;

/** The line that is being read, with the words for what is wrong in it. */
struct Line {
    const std::string& file;
    std::size_t number;
    Json json;

    [[noreturn]] void refuse(const std::string& what) const
    {
        throw BadRecording(file + ':' + std::to_string(number) + ": " + what);
    }

    const Json&
    member(const char* key, bool (Json::*is_kind)() const noexcept, const char* kind) const
    {
        const auto found = json.find(key);
        if (found == json.end() || !((*found).*is_kind)()) {
            refuse("expected \"" + std::string(key) + "\" to be " + kind);
        }
        return *found;
    }
    template<class Number> Number number_of(const char* key) const
    {
        return member(key, &Json::is_number, "a number").get<Number>();
    }
    std::string text_of(const char* key) const
    {
        return as_bytes(member(key, &Json::is_string, "a text").get<std::string>());
    }
    /** A text, or nothing for null. */
    std::optional<std::string> optional_text(const char* key) const
    {
        const auto found = json.find(key);
        if (found != json.end() && found->is_null()) {
            return std::nullopt;
        }
        return text_of(key);
    }
    std::vector<std::string> texts_of(const char* key) const
    {
        std::vector<std::string> texts;
        for (const Json& text : member(key, &Json::is_array, "an array of texts")) {
            if (!text.is_string()) {
                refuse("expected \"" + std::string(key) + "\" to be an array of texts");
            }
            texts.push_back(as_bytes(text.get<std::string>()));
        }
        return texts;
    }
};

void expect_header(const Line& line)
{
    const auto format = line.json.find("format");
    if (format == line.json.end() || *format != RECORDING_FORMAT) {
        line.refuse(
            std::string("this is no recording: expected the header {\"format\":\"") +
            RECORDING_FORMAT + "\",\"version\":" + std::to_string(RECORDING_VERSION) + ",…}"
        );
    }
    const int version = line.number_of<int>("version");
    if (version > RECORDING_VERSION) {
        line.refuse(
            "the recording's version is " + std::to_string(version) + ": expected " +
            std::to_string(RECORDING_VERSION) + ", the newest that this program reads"
        );
    }
}

RecordedCall call_of(const Line& line)
{
    return {
        line.number,
        line.number_of<std::uint64_t>("n"),
        line.number_of<double>("time"),
        line.number_of<std::int64_t>("us"),
        line.number_of<int>("result"),
        line.number_of<int>("errno"),
        line.optional_text("request"),
        line.number_of<std::uint64_t>("request_length"),
        line.optional_text("reply"),
        line.number_of<std::uint64_t>("reply_length"),
    };
}

FactChange fact_of(const Line& line, const Json& json, const char* from, const char* to)
{
    const auto text = [&](const char* key) {
        const auto found = json.find(key);
        if (found == json.end() || !found->is_string()) {
            line.refuse("expected \"" + std::string(key) + "\" of a fact to be a text");
        }
        return found->get<std::string>();
    };
    return {
        text("what"), text("key"), from == nullptr ? Json() : json.value(from, Json()),
        json.value(to, Json())};
}

/** Lines come in any order of processes; what belongs to one process's command is kept together. */
class Parser {
  public:
    explicit Parser(const std::string& file) : file_(file) {}

    void take(const std::string& text)
    {
        Line line = {file_, ++number_, Json::parse(text, nullptr, false)};
        if (!line.json.is_object()) {
            line.refuse("expected a JSON object, whole and alone in its line");
        }
        if (number_ == 1 || line.json.contains("format")) {
            expect_header(line);
            recording_.keyed = recording_.keyed || line.json.value("names", "") == NAMES_KEYED;
            return;
        }
        const std::string kind = line.text_of("kind");
        const auto reader = READERS.find(kind);
        if (reader != READERS.end()) {
            (this->*reader->second)(line, processes_[line.number_of<std::int64_t>("pid")]);
        }
    }

    std::size_t lines() const { return number_; }
    Recording result() { return std::move(recording_); }

  private:
    static constexpr std::size_t NONE = SIZE_MAX;

    /** Where a process is: its state, and the command that it carries out. */
    struct Process {
        std::optional<Facts> facts;
        std::size_t command = NONE; // of the recording's
        bool named = false;         // whether the broker told it
    };
    using Reader = void (Parser::*)(const Line&, Process&);
    static const std::map<std::string, Reader> READERS;

    RecordedCommand& begin_command(const Line& line, Process& process)
    {
        process.command = recording_.commands.size();
        RecordedCommand& command = recording_.commands.emplace_back();
        command.line = line.number;
        command.pid = line.number_of<std::int64_t>("pid");
        return command;
    }

    /** The broker's command that the line belongs to. */
    RecordedCommand& command_of(const Line& line, const Process& process)
    {
        if (!process.named) {
            line.refuse("expected a line of the kind command by this process in front of it");
        }
        return recording_.commands[process.command];
    }

    void take_state(const Line& line, Process& process)
    {
        process.facts.emplace();
        for (const Json& fact : line.member("facts", &Json::is_array, "an array of facts")) {
            apply_change(*process.facts, fact_of(line, fact, nullptr, "value"));
        }
    }
    void take_command(const Line& line, Process& process)
    {
        RecordedCommand& command = begin_command(line, process);
        process.named = true;
        command.words = line.texts_of("words");
        if (command.words.empty()) {
            line.refuse("expected \"words\" to hold an operation");
        }
        command.login = line.optional_text("as");
        command.log_level = line.number_of<int>("log_level");
        command.time = line.number_of<double>("time");
        command.before = process.facts;
        if (line.member("log_file", &Json::is_boolean, "true or false").get<bool>()) {
            command.statements.emplace();
        }
    }
    void take_call(const Line& line, Process& process)
    {
        if (process.command == NONE) {
            begin_command(line, process).time = line.number_of<double>("time");
        }
        recording_.commands[process.command].calls.push_back(call_of(line));
    }
    void take_statement(const Line& line, Process& process)
    {
        RecordedCommand& command = command_of(line, process);
        if (!command.statements) {
            command.statements.emplace();
        }
        command.statements->push_back(
            {line.text_of("level"), line.text_of("unit"), line.number_of<int>("line"),
             line.text_of("text")}
        );
    }
    void take_change(const Line& line, Process& process)
    {
        RecordedCommand& command = command_of(line, process);
        command.changes.push_back(fact_of(line, line.json, "from", "to"));
        if (process.facts) {
            apply_change(*process.facts, command.changes.back());
        }
    }
    void take_answer(const Line& line, Process& process)
    {
        command_of(line, process).answer = {
            line.text_of("code"), line.optional_text("response"),
            line.number_of<std::int64_t>("us")};
        process.command = NONE;
        process.named = false;
    }

    const std::string& file_;
    std::size_t number_ = 0;
    std::map<std::int64_t, Process> processes_;
    Recording recording_;
};

const std::map<std::string, Parser::Reader> Parser::READERS = {
    {"state", &Parser::take_state},   {"command", &Parser::take_command},
    {"call", &Parser::take_call},     {"statement", &Parser::take_statement},
    {"change", &Parser::take_change}, {"answer", &Parser::take_answer},
};

} // namespace

Recording parse_recording(const std::string& text, const std::string& name)
{
    Parser parser(name);
    std::size_t at = 0;
    for (std::size_t end = 0; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
        parser.take(text.substr(at, end - at));
    }
    const std::string last = name + ':' + std::to_string(parser.lines() + 1) + ": ";
    if (at < text.size()) {
        throw BadRecording(last + "the recording is cut: expected the line to have an end");
    }
    if (text.empty()) {
        throw BadRecording(last + "the file is empty: expected a recording's header");
    }
    return parser.result();
}

void expect_answers(const Recording& recording, const std::string& name)
{
    for (const RecordedCommand& command : recording.commands) {
        if (!command.words.empty() && !command.answer) {
            throw BadRecording(
                name + ':' + std::to_string(command.line) +
                ": the recording is cut: expected an answer to " + command.words.front() +
                " of process " + std::to_string(command.pid)
            );
        }
    }
}
