#include "devkit/broker/command.h"

#include <glib.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <sstream>

namespace {

/** Sorts out the words that are no option: a mistyped option is not a parameter. */
std::vector<std::string> command_words(const std::vector<std::string>& rest)
{
    const auto mark = std::find(rest.begin(), rest.end(), "--");
    for (auto word = rest.begin(); word != mark; ++word) {
        if (word->size() > 1 && word->front() == '-') {
            throw BadUse("unknown option " + *word + " (write -- before such a parameter)");
        }
    }
    std::vector<std::string> words(rest.begin(), mark);
    if (mark != rest.end()) {
        words.insert(words.end(), mark + 1, rest.end());
    }
    return words;
}

std::vector<std::string> split_line(const std::string& line)
{
    int count = 0;
    char** words = nullptr;
    GError* error = nullptr;
    if (g_shell_parse_argv(line.c_str(), &count, &words, &error) == FALSE) {
        const std::unique_ptr<GError, decltype(&g_error_free)> owner(error, g_error_free);
        if (error->code == G_SHELL_ERROR_EMPTY_STRING) {
            return {};
        }
        throw BadUse(error->message);
    }
    const std::unique_ptr<char*, decltype(&g_strfreev)> owner(words, g_strfreev);
    return {words, words + count};
}

/** Parses by the options that `app` has; the words that are left. */
std::vector<std::string> parse(CLI::App& app, const std::vector<std::string>& words)
{
    app.set_help_flag();
    app.allow_extras();
    try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    } catch (const CLI::ParseError& error) {
        throw BadUse(error.what());
    }
    return command_words(app.remaining());
}

/** The same where one word must be left; `what` is what a complaint calls it. */
std::string parse_one(CLI::App& app, const std::vector<std::string>& words, const std::string& what)
{
    const auto rest = parse(app, words);
    if (rest.size() != 1) {
        throw BadUse("expected one " + what + " and nothing else");
    }
    return rest.front();
}

} // namespace

Options parse_options(const std::vector<std::string>& words)
{
    Options options;
    CLI::App app;
    app.add_option("--as", options.command.credentials);
    app.add_option("--log-level", options.command.log_level)->check(CLI::Range(0, 7));
    app.add_option("--plugin", options.plugin);
    app.add_option("--record", options.record);
    app.add_flag("--json", options.json);
    app.add_option("--fail", options.faults)->allow_extra_args(false);
    options.command.words = parse(app, words);
    auto& credentials = options.command.credentials;
    if (credentials && credentials->find(':') == std::string::npos) {
        *credentials += ':';
    }
    return options;
}

Options parse_run(const std::vector<std::string>& words)
{
    Options options = parse_options(words);
    if (options.command.words.empty()) {
        throw BadUse("which operation?");
    }
    return options;
}

std::vector<ScriptLine> parse_script(const std::string& text, const std::string& name)
{
    std::vector<ScriptLine> script;
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        try {
            const auto words = split_line(line);
            if (words.empty()) {
                continue;
            }
            const Options options = parse_run(words);
            if (!options.faults.empty()) {
                throw BadUse("--fail is for broker run");
            }
            if (options.json || !options.plugin.empty() || !options.record.empty()) {
                throw BadUse("--json, --plugin and --record are the whole script's");
            }
            script.push_back({line, options.command});
        } catch (const BadUse& bad) {
            throw BadUse(name + ':' + std::to_string(number) + ": " + bad.what());
        }
    }
    return script;
}

LookOptions parse_look(const std::vector<std::string>& words)
{
    LookOptions options;
    CLI::App app;
    app.add_flag("--json", options.json);
    if (const auto rest = parse(app, words); !rest.empty()) {
        throw BadUse("expected nothing but --json, not " + rest.front());
    }
    return options;
}

StoryOptions parse_story(const std::vector<std::string>& words)
{
    StoryOptions options;
    CLI::App app;
    app.add_option("-o,--output", options.page);
    options.recording = parse_one(app, words, "recording");
    return options;
}

ReplayOptions parse_replay(const std::vector<std::string>& words)
{
    ReplayOptions options;
    CLI::App app;
    app.add_option("--against", options.against);
    app.add_flag("--json", options.json);
    options.recording = parse_one(app, words, "recording");
    return options;
}

CheckOptions parse_check(const std::vector<std::string>& words)
{
    CheckOptions options;
    CLI::App app;
    app.add_option("--profile", options.profile);
    app.add_flag("--json", options.json);
    options.library = parse_one(app, words, "library");
    return options;
}

ExplainOptions parse_explain(const std::vector<std::string>& words)
{
    ExplainOptions options;
    CLI::App app;
    app.add_flag("--follow", options.follow);
    app.add_flag("--json", options.json);
    const auto rest = parse(app, words);
    if (rest.size() > 1) {
        throw BadUse("expected one log and nothing else");
    }
    options.log = rest.empty() ? options.log : rest.front();
    return options;
}
