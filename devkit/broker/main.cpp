/** The broker on a desk: loads the plug-in, has it carry out commands, prints the answers. */
#include "devkit/broker/check/check.h"
#include "devkit/broker/output.h"
#include "devkit/broker/report.h"
#include "devkit/broker/state/show.h"
#include "devkit/broker/terminal.h"
#include "devkit/on_device.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr const char* USAGE =
    R"(usage: broker run OPERATION [PARAM...] [--as LOGIN[:PASSWORD]] [--log-level N] [--plugin PATH] [--json]
                  [--fail CALL:N[:ERRNO]]...
       broker script FILE|- [--plugin PATH] [--json]
       broker hash PASSWORD [--plugin PATH]
       broker state [--json]
       broker check LIBRARY [--json] [--profile NAME]

run     has the plug-in carry out one command; without --as it comes without credentials
        --fail: the N-th CALL that the plug-in makes fails, with ERRNO; an unknown one tells those that there are
script  the same for every line of a file: OPERATION [PARAM...] [--as ...] [--log-level N]
hash    prints a password's hash pair as the operations take it
state   shows the device's state: owner, accounts of daemon and system beside each other, remote users, sessions,
        and what of it does not agree
check   tells whether a file is a plug-in that a device's broker can load, what is wrong with it and how to
        mend it; NAME is whose broker: armhf, armhf-strict or desk (default: by the file's machine)

A lone -- ends the options. PATH is the plug-in, by default libsyscmd.so beside the broker; elsewhere
than on a device (devkit/device/device starts one) run and script need it, since a plug-in works on
the machine that it finds.
Exit status: 0 when every code is CODE_SUCCEED or CODE_NOREPLY, nothing is found and everything agrees, 1 when
not, 2 for bad use.
)";

using Words = std::vector<std::string>;

/** The plug-in for commands. */
Plugin load(const Options& options)
{
    if (options.plugin.empty() && !on_device()) {
        throw BadUse(no_device("--plugin"));
    }
    return Plugin(options.plugin);
}

/** Becomes the broker whose calls can fail. */
[[noreturn]] void become_failing_broker(const Words& words)
{
    std::vector<std::string> arguments = {"broker", "run"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    std::vector<char*> pointers;
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
    const Answer answer = load(options).run(options.command);
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
    const Plugin plugin = load(options);
    auto answers = nlohmann::ordered_json::array();
    bool all_carried_out = true;
    for (const ScriptLine& line : lines) {
        const Answer answer = plugin.run(line.command);
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

int hash(const Words& words)
{
    const Options options = parse_options(words);
    const std::string password = only_argument(options, "password");
    print(Plugin(options.plugin).hash_pair(password) + '\n');
    return EXIT_CARRIED_OUT;
}

int state(const Words& words)
{
    const bool json = parse_state(words).json;
    if (!on_device()) {
        throw BadUse("this is no device: devkit/device/device starts one");
    }
    const DeviceState device = read_device_state();
    const Overview overview = overview_of(device);
    print(
        json ? text_of(as_json(device, overview))
             : for_people(device, overview, terminal_width(), colours_wanted())
    );
    return exit_status(all_agrees(overview));
}

int check(const Words& words)
{
    const CheckOptions options = parse_check(words);
    const Report report = check_library(options.library, options.profile);
    print(options.json ? text_of(as_json(report)) : for_people(report));
    return exit_status(findings(report) == 0);
}

bool asks_for_help(const Words& words)
{
    return std::any_of(
        words.begin(), std::find(words.begin(), words.end(), "--"),
        [](const std::string& word) { return word == "--help" || word == "-h"; }
    );
}

int dispatch(const std::string& command, const Words& words)
{
    if (asks_for_help({command}) || asks_for_help(words)) {
        print(USAGE);
        return 0;
    }
    if (command == "run") {
        return run(words);
    }
    if (command == "script") {
        return script(words);
    }
    if (command == "hash") {
        return hash(words);
    }
    if (command == "state") {
        return state(words);
    }
    if (command == "check") {
        return check(words);
    }
    throw BadUse(
        (command.empty() ? "which command?" : "unknown command " + command) + " (see broker --help)"
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
