/** The broker on a desk: loads the plug-in, has it carry out commands, prints the answers. */
#include "devkit/broker/check/check.h"
#include "devkit/broker/explain/explain.h"
#include "devkit/broker/output.h"
#include "devkit/broker/page/page.h"
#include "devkit/broker/record/recorder.h"
#include "devkit/broker/replay/replay.h"
#include "devkit/broker/report.h"
#include "devkit/broker/state/show.h"
#include "devkit/broker/terminal.h"
#include "devkit/broker/watch/watch.h"
#include "devkit/broker/watch/watchers.h"
#include "devkit/on_device.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>

namespace {

constexpr const char* USAGE =
    R"(usage: broker run OPERATION [PARAM...] [--as LOGIN[:PASSWORD]] [--log-level N] [--plugin PATH] [--record FILE] [--json]
                  [--fail CALL:N[:ERRNO]]...
       broker script FILE|- [--plugin PATH] [--record FILE] [--json]
       broker replay FILE [--against PLUGIN] [--json]
       broker hash PASSWORD [--plugin PATH]
       broker state [--json]
       broker watch [--json]
       broker check LIBRARY [--json] [--profile NAME]
       broker explain [FILE|-] [--follow] [--json]
       broker story RECORDING|- [--output PAGE]

run     has the plug-in carry out one command; without --as it comes without credentials
        --fail: the N-th CALL that the plug-in makes fails, with ERRNO; an unknown one tells those that there are
script  the same for every line of a file: OPERATION [PARAM...] [--as ...] [--log-level N]
replay  makes the commands of a recording again and tells how requests, statements and answers differ
hash    prints a password's hash pair as the operations take it
state   shows the device's state: owner, accounts of daemon and system beside each other, remote users, sessions,
        and what of it does not agree
watch   shows each command as it comes to this device, with its transactions, statements and changes, until Ctrl-C;
        with --json the lines of a recording
check   tells whether a file is a plug-in that a device's broker can load, what is wrong with it and how to
        mend it; NAME is whose broker: armhf, armhf-strict or desk (default: by the file's machine)
explain tells what a log says of each command, and what to do about it: /var/log/shbroker.log, or FILE, which
        may hold what journalctl prints (text or JSON); with --follow on and on, as the log grows
story   makes one page of a recording, to look at in a browser and to send on: each command with its transactions,
        statements, changes and answer; on standard output, or as the file PAGE

A lone -- ends the options. --record adds each command, the transactions that it led to, what the plug-in
said and what changed to FILE (docs/formats-recording.md). PATH is the plug-in, by default libsyscmd.so beside the broker; elsewhere
than on a device (devkit/device/device starts one) run and script need it, since a plug-in works on
the machine that it finds.
Exit status: 0 when every code is CODE_SUCCEED or CODE_NOREPLY, nothing is found, everything agrees and all came
as recorded, 1 when not (explain: when there is no statement to explain), 2 for bad use.
)";

using Words = std::vector<std::string>;

/** The plug-in for commands, which are recorded where that is wanted. */
class Carrier {
  public:
    explicit Carrier(const Options& options)
    {
        if (options.plugin.empty() && !on_device()) {
            throw BadUse(no_device("--plugin"));
        }
        if (!options.record.empty()) {
            recorder_.emplace(options.record);
            recording_ = std::filesystem::absolute(options.record);
        } else if (on_device() && is_watched()) {
            recorder_.emplace(WATCH_FILE);
        }
        plugin_.emplace(options.plugin);
    }

    Answer run(const Command& command)
    {
        if (!recorder_) {
            return plugin_->run(command);
        }
        const bool shown = !recording_.empty() && on_device() && is_watched();
        const auto begin = shown ? std::filesystem::file_size(recording_) : 0;
        Answer answer = recorder_->run(*plugin_, command);
        if (shown) {
            show_watchers(recording_, begin);
        }
        return answer;
    }

  private:
    std::filesystem::path recording_; // that was asked for
    std::optional<Recorder> recorder_;
    std::optional<Plugin> plugin_;
};

/** Becomes the broker whose calls can fail. */
[[noreturn]] void become_failing_broker(const Words& words)
{
    std::vector<std::string> arguments = {"broker", "run"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    const std::string program = beside_broker("broker-failing").string();
    execv(program.c_str(), pointers.data());
    throw BadUse(
        "--fail needs " + program +
        ", which a build for this machine makes: " + std::strerror(errno)
    );
}

int run(const Words& words)
{
    const Options options = parse_run(words);
    if (!options.faults.empty()) {
        become_failing_broker(words);
    }
    const Answer answer = Carrier(options).run(options.command);
    print(options.json ? text_of(as_json(options.command, answer)) : for_people(answer));
    return exit_status(carried_out(answer));
}

/** The one argument of a command that takes options too, but none of a transaction's. */
std::string only_argument(const Options& options, const char* what)
{
    if (options.command.words.size() != 1 || options.command.credentials ||
        !options.faults.empty()) {
        throw BadUse(std::string("expected one ") + what + " and nothing else");
    }
    return options.command.words.front();
}

std::string read_all(const std::string& path, const std::string& name)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(
        path == "-" ? stdin : std::fopen(path.c_str(), "re"), std::fclose
    );
    std::string text;
    std::array<char, 4096> chunk{};
    std::size_t got = 0;
    while (file && (got = std::fread(chunk.data(), 1, chunk.size(), file.get())) > 0) {
        text.append(chunk.data(), got);
    }
    if (!file || std::ferror(file.get()) != 0) {
        throw BadUse("cannot read " + name + ": " + std::strerror(errno));
    }
    return text;
}

int script(const Words& words)
{
    const Options options = parse_options(words);
    const std::string path = only_argument(options, "file");
    const std::string name = path == "-" ? "standard input" : path;
    const auto lines = parse_script(read_all(path, name), name);
    Carrier carrier(options);
    auto answers = nlohmann::ordered_json::array();
    bool all_carried_out = true;
    for (const ScriptLine& line : lines) {
        const Answer answer = carrier.run(line.command);
        all_carried_out = all_carried_out && carried_out(answer);
        if (options.json) {
            answers.push_back(as_json(line.command, answer));
        } else {
            print("> " + line.text + '\n' + for_people(answer));
        }
    }
    if (options.json) {
        print(text_of(answers));
    }
    return exit_status(all_carried_out);
}

int replay(const Words& words)
{
    const ReplayOptions options = parse_replay(words);
    if (!on_device()) {
        throw BadUse(
            "this is no device, and replay sets its accounts: devkit/device/device starts one"
        );
    }
    const std::string text = read_all(options.recording, options.recording);
    const auto replayed = replay_recording(text, options.recording, options.against);
    print(options.json ? text_of(as_json(replayed)) : for_people(replayed));
    return exit_status(as_recorded(replayed));
}

int hash(const Words& words)
{
    const Options options = parse_options(words);
    const std::string password = only_argument(options, "password");
    if (!options.record.empty()) {
        throw BadUse("hash takes no --record: it makes no command");
    }
    print(Plugin(options.plugin).hash_pair(password) + '\n');
    return EXIT_CARRIED_OUT;
}

void expect_device()
{
    if (!on_device()) {
        throw BadUse("this is no device: devkit/device/device starts one");
    }
}

int state(const Words& words)
{
    const bool json = parse_look(words).json;
    expect_device();
    const DeviceState device = read_device_state();
    const Overview overview = overview_of(device);
    print(
        json ? text_of(as_json(device, overview))
             : for_people(device, overview, terminal_width(), colours_wanted())
    );
    return exit_status(all_agrees(overview));
}

int watch(const Words& words)
{
    const bool json = parse_look(words).json;
    expect_device();
    watch_device(json);
    return EXIT_CARRIED_OUT;
}

int check(const Words& words)
{
    const CheckOptions options = parse_check(words);
    const Report report = check_library(options.library, options.profile);
    print(options.json ? text_of(as_json(report)) : for_people(report));
    return exit_status(findings(report) == 0);
}

int explain(const Words& words)
{
    return exit_status(explain_log(parse_explain(words)));
}

int story(const Words& words)
{
    const StoryOptions options = parse_story(words);
    const std::string& path = options.recording;
    const std::string name = path == "-" ? "standard input" : path;
    const std::string page = page_of(
        parse_recording(read_all(path, name), name), std::filesystem::path(name).filename()
    );
    if (options.page.empty()) {
        print(page);
    } else {
        write_page(options.page, page);
    }
    return EXIT_CARRIED_OUT;
}

bool asks_for_help(const Words& words)
{
    return std::any_of(
        words.begin(), std::find(words.begin(), words.end(), "--"),
        [](const std::string& word) { return word == "--help" || word == "-h"; }
    );
}

/** What the broker can be asked, by name; USAGE tells what it is. */
constexpr struct {
    std::string_view name;
    int (*carry_out)(const Words& words);
} COMMANDS[] = {
    {"run", run},     {"script", script}, {"replay", replay},   {"hash", hash},   {"state", state},
    {"watch", watch}, {"check", check},   {"explain", explain}, {"story", story},
};

int dispatch(const std::string& name, const Words& words)
{
    if (asks_for_help({name}) || asks_for_help(words)) {
        print(USAGE);
        return EXIT_CARRIED_OUT;
    }
    for (const auto& command : COMMANDS) {
        if (command.name == name) {
            return command.carry_out(words);
        }
    }
    throw BadUse(
        (name.empty() ? "which command?" : "unknown command " + name) + " (see broker --help)"
    );
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return dispatch(argc > 1 ? argv[1] : "", argc > 2 ? Words(argv + 2, argv + argc) : Words());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "broker: %s\n", error.what());
        return EXIT_BAD_USE;
    }
}
