#include "devkit/broker/record/recorder.h"

#include "devkit/broker/record/device_state.h"
#include "devkit/broker/record/log_file.h"
#include "devkit/broker/record/redaction.h"
#include "devkit/broker/report.h"
#include "devkit/bwdrecord/append.h"
#include "devkit/bwdrecord/line.h"
#include "devkit/bwdrecord/pseudonym.h"
#include "devkit/on_device.h"
#include "devkit/recording/characters.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

using Json = nlohmann::ordered_json;

namespace {

Facts state_now()
{
    return on_device() ? device_state() : Facts();
}

double seconds_now()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<double>(std::chrono::duration_cast<std::chrono::microseconds>(now).count()) /
           1e6;
}

Json line_of(const char* kind)
{
    return {{"kind", kind}, {"pid", getpid()}};
}

Json optional_text(const std::optional<std::string>& text)
{
    return text ? Json(as_characters(*text)) : Json();
}

Json texts(const std::vector<std::string>& all)
{
    Json array = Json::array();
    for (const std::string& text : all) {
        array.push_back(as_characters(text));
    }
    return array;
}

/** A file with something else in it is not to be written to. */
void expect_recording(const std::string& path)
{
    std::ifstream file(path);
    std::string first;
    std::getline(file, first);
    try {
        parse_recording(first.empty() ? "" : first + '\n', path);
    } catch (const BadRecording& bad) {
        throw BadUse(bad.what());
    }
}

std::string library()
{
    return std::filesystem::read_symlink("/proc/self/exe").replace_filename("libbwdrecord.so");
}

/** One that is loaded already writes to another file. */
void expect_no_other_recorder()
{
    if (dlopen(library().c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr) {
        throw BadUse("libbwdrecord.so is preloaded and records already: leave it out, or --record");
    }
}

/** Loads the library between this program and the plug-ins that it will load. */
void stand_between(const std::string& path)
{
    setenv("BWDRECORD_FILE", path.c_str(), 1);
    if (dlopen(library().c_str(), RTLD_NOW | RTLD_GLOBAL) == nullptr) {
        throw BadUse(dlerror());
    }
}

} // namespace

Recorder::Recorder(const std::string& path) : path_(std::filesystem::absolute(path))
{
    expect_no_other_recorder();
    bool empty = false;
    file_ = open_recording(path_.c_str(), &empty);
    if (file_ < 0) {
        throw BadUse("cannot record in " + path + ": " + std::strerror(errno));
    }
    pseudonym_key(std::getenv("BWDRECORD_KEY"));
    if (!empty) {
        expect_recording(path_);
    } else {
        Text header;
        add_header(&header);
        append_whole(file_, header.bytes, header.length);
        text_free(&header);
    }
    stand_between(path_);
}

Recorder::~Recorder()
{
    close(file_);
}

void Recorder::write(const Json& line)
{
    const std::string text = line.dump() + '\n';
    if (!append_whole(file_, text.data(), text.size()) && !complained_) {
        complained_ = true;
        std::fprintf(
            stderr, "broker: %s: not all is recorded: %s\n", path_.c_str(), std::strerror(errno)
        );
    }
}

void Recorder::write_state(const Facts& state, const Redaction& redaction)
{
    Json facts = Json::array();
    for (const FactChange& fact : changes_between({}, state)) {
        const FactChange shown = redaction.change(fact);
        facts.push_back({{"what", shown.what}, {"key", shown.key}, {"value", shown.to}});
    }
    Json line = line_of("state");
    line["facts"] = facts;
    write(line);
    known_ = state;
}

void Recorder::write_command(const Command& command, const Redaction& redaction, bool log_file)
{
    Json line = line_of("command");
    line["time"] = seconds_now();
    line["words"] = texts(redaction.words());
    line["as"] = optional_text(redaction.login());
    line["log_level"] = command.log_level;
    line["log_file"] = log_file;
    write(line);
}

void Recorder::write_statements(std::uint64_t from, const Redaction& redaction)
{
    for (const RecordedStatement& statement : statements_behind(from)) {
        Json line = line_of("statement");
        line["level"] = statement.level;
        line["unit"] = as_characters(statement.unit);
        line["line"] = statement.line;
        line["text"] = as_characters(redaction.text(statement.text));
        write(line);
    }
}

void Recorder::write_changes(const Facts& before, const Redaction& redaction)
{
    for (const FactChange& change : changes_between(before, *known_)) {
        const FactChange shown = redaction.change(change);
        Json line = line_of("change");
        line["what"] = shown.what;
        line["key"] = shown.key;
        line["from"] = shown.from;
        line["to"] = shown.to;
        write(line);
    }
}

void Recorder::write_answer(const Answer& answer, const Redaction& redaction)
{
    const std::optional<std::string> response = response_of(answer);
    Json line = line_of("answer");
    line["code"] = code_name(answer.code);
    line["response"] =
        optional_text(response ? std::optional(redaction.text(*response)) : std::nullopt);
    line["us"] = std::llround(answer.milliseconds * 1000);
    write(line); // the last: a command that has it is whole
}

Answer Recorder::run(const Plugin& plugin, const Command& command)
{
    Redaction redaction(command);
    const Facts before = state_now();
    redaction.learn(before);
    if (on_device() && known_ != before) {
        write_state(before, redaction);
    }
    const std::optional<std::uint64_t> log = end_of_log();
    write_command(command, redaction, log.has_value());

    Answer answer = plugin.run(command);

    known_ = state_now();
    redaction.learn(*known_);
    if (log) {
        write_statements(*log, redaction);
    }
    write_changes(before, redaction);
    write_answer(answer, redaction);
    return answer;
}
