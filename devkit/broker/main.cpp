/** The broker on a desk: loads the plug-in, has it carry out commands, prints the answers. */
#include "devkit/broker/report.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>

namespace {

constexpr int EXIT_CARRIED_OUT = 0;
constexpr int EXIT_NOT_CARRIED_OUT = 1;
constexpr int EXIT_BAD_USE = 2;

constexpr const char* USAGE =
    R"(usage: broker run OPERATION [PARAM...] [--as LOGIN[:PASSWORD]] [--log-level N] [--plugin PATH] [--json]
       broker script FILE|- [--plugin PATH] [--json]
       broker hash PASSWORD [--plugin PATH]

run     has the plug-in carry out one command; without --as it comes without credentials
script  the same for every line of a file: OPERATION [PARAM...] [--as ...] [--log-level N]
hash    prints a password's hash pair as the operations take it

A lone -- ends the options. PATH is the plug-in, by default libsyscmd.so beside the broker.
Exit status: 0 when every code is CODE_SUCCEED or CODE_NOREPLY, 1 when one is not, 2 for bad use.
)";

using Words = std::vector<std::string>;

void print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

int exit_status(bool all_carried_out)
{
    return all_carried_out ? EXIT_CARRIED_OUT : EXIT_NOT_CARRIED_OUT;
}

int run(const Words& words)
{
    const Options options = parse_run(words);
    const Answer answer = Plugin(options.plugin).run(options.command);
    print(options.json ? text_of(as_json(options.command, answer)) : for_people(answer));
    return exit_status(carried_out(answer));
}

/** The one argument of a command that takes options too, but none of a transaction's. */
std::string only_argument(const Options& options, const char* what)
{
    if (options.command.words.size() != 1 || options.command.credentials) {
        throw BadUse(std::string("expected one ") + what + " and nothing else");
    }
    return options.command.words.front();
}

std::string read_all(const std::string& path)
{
    std::ifstream file;
    if (path != "-") {
        file.open(path);
        if (!file) {
            throw BadUse("cannot read " + path);
        }
    }
    std::istream& in = path == "-" ? std::cin : file;
    return {std::istreambuf_iterator<char>(in), {}};
}

int script(const Words& words)
{
    const Options options = parse_options(words);
    const std::string path = only_argument(options, "file");
    const auto lines = parse_script(read_all(path), path == "-" ? "standard input" : path);
    const Plugin plugin(options.plugin);
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

int dispatch(const std::string& command, const Words& words)
{
    if (command == "run") {
        return run(words);
    }
    if (command == "script") {
        return script(words);
    }
    if (command == "hash") {
        return hash(words);
    }
    if (command != "--help" && command != "-h") {
        throw BadUse(
            (command.empty() ? "which command?" : "unknown command " + command) +
            " (see broker --help)"
        );
    }
    print(USAGE);
    return 0;
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
