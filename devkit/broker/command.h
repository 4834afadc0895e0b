/** A command of the cloud service, as a person or a script words it. */
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

struct Command {
    std::vector<std::string> words;         // the operation's name, then its parameters
    std::optional<std::string> credentials; // login:password; nothing: the command comes without
    int log_level = 3;                      // the journal's threshold, on the syslog scale
};

/** A command, a script or an option that cannot be understood; the text tells why. */
class BadUse : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** The words behind one of the broker's commands, sorted out. */
struct Options {
    Command command;
    std::string plugin; // empty: the one beside the broker
    std::string record; // empty: nothing is recorded
    bool json = false;
    std::vector<std::string> faults; // calls that are to fail, CALL:N[:ERRNO]
};

/**
 * Reads WORD... [--as LOGIN[:PASSWORD]] [--log-level N] [--plugin PATH] [--record FILE] [--json]
 * [--fail CALL:N[:ERRNO]]..., the options anywhere before a lone "--".
 *
 * @throws BadUse
 */
Options parse_options(const std::vector<std::string>& words);

/** The same where the words must be an operation and its parameters. */
Options parse_run(const std::vector<std::string>& words);

/** A script's command and the line that it was written in. */
struct ScriptLine {
    std::string text;
    Command command;
};

/**
 * Reads a command a line, in words as a shell would split them; "#" begins a comment, empty lines
 * are skipped.
 *
 * @param name  what the script is called in a complaint
 * @throws BadUse  naming the first line that is no command
 */
std::vector<ScriptLine> parse_script(const std::string& text, const std::string& name);

/** What `broker replay` is asked. */
struct ReplayOptions {
    std::string recording;
    std::string against; // empty: the plug-in beside the broker
    bool json = false;
};

/**
 * Reads FILE [--against PLUGIN] [--json].
 *
 * @throws BadUse
 */
ReplayOptions parse_replay(const std::vector<std::string>& words);

/** What `broker state` and `broker watch` are asked. */
struct LookOptions {
    bool json = false;
};

/**
 * Reads [--json].
 *
 * @throws BadUse
 */
LookOptions parse_look(const std::vector<std::string>& words);

/** What `broker story` is asked. */
struct StoryOptions {
    std::string recording; // a file, or "-"
    std::string page;      // empty: standard output
};

/**
 * Reads RECORDING|- [--output PAGE].
 *
 * @throws BadUse
 */
StoryOptions parse_story(const std::vector<std::string>& words);

/** What `broker check` is asked. */
struct CheckOptions {
    std::string library;
    std::string profile; // empty: by the library's machine
    bool json = false;
};

/**
 * Reads LIBRARY [--json] [--profile NAME].
 *
 * @throws BadUse
 */
CheckOptions parse_check(const std::vector<std::string>& words);

/** What `broker explain` is asked. */
struct ExplainOptions {
    std::string log = "/var/log/shbroker.log"; // "-": standard input
    bool follow = false;
    bool json = false;
};

/**
 * Reads [FILE|-] [--follow] [--json].
 *
 * @throws BadUse
 */
ExplainOptions parse_explain(const std::vector<std::string>& words);
