#include "devkit/boxwelld/command_line.h"
#include "devkit/boxwelld/seed.h"
#include "devkit/boxwelld/server.h"
#include "devkit/boxwelld/show.h"
#include "devkit/boxwelld/transcript.h"
#include "devkit/change.h"

#include <cstdio>
#include <memory>
#include <string>

namespace {

constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;
constexpr int DEFAULT_CLIENT_TIMEOUT_MS = 5000;

struct Options {
    Files files;
    CLI::Option* socket = nullptr;
    int client_timeout_ms = DEFAULT_CLIENT_TIMEOUT_MS;
    bool json = false;
    int from = 1;
    std::string file;
};

struct Usage {
    const char* command;
    const char* arguments;
};

constexpr Usage USAGES[] = {
    {"serve", "[--socket PATH] [--client-timeout MS]"},
    {"seed", "FILE|-"},
    {"show", "[--json]"},
    {"transcript", "[--from N] [--json]"},
    {"order", "KIND [TEXT] [--for TEXT] [--skip K] [--count N] | list [--json] | clear"},
    {"chaos", "--seed S --rate P [--kinds KIND,...] [--count N] | off"},
    {"send", "FILE|- [--socket PATH]"},
    {"revive", ""},
};

/** Usage lines as the manual page has them: of one command, or of all. */
class UsageFormatter : public CLI::Formatter {
  public:
    std::string make_usage(const CLI::App* app, std::string /*name*/) const override
    {
        std::string text;
        for (const Usage& usage : USAGES) {
            if (app->get_parent() == nullptr || app->get_name() == usage.command) {
                text += std::string(text.empty() ? "usage: " : "       ") +
                        "boxwelld [OPTION...] " + usage.command +
                        (*usage.arguments != '\0' ? " " : "") + usage.arguments + '\n';
            }
        }
        return text;
    }
};

void add_state_commands(CLI::App& app, Options& options)
{
    CLI::App* seeding = app.add_subcommand("seed", "replace the whole state by a JSON text");
    seeding->add_option("FILE", options.file, "the JSON text, - for standard input")->required();
    seeding->callback([&options] {
        Store store = open_store(options.files);
        const std::string text = read_text(options.file);
        const Change change;
        seed(store, text);
        clear_transcript(options.files.paths);
    });
    CLI::App* showing = app.add_subcommand("show", "print the state");
    showing->add_flag("--json", options.json, "in the form that seed takes");
    showing->callback([&options] {
        expect_state(options.files);
        Store store(options.files.paths);
        print(show(store, options.json));
    });
}

void add_transcript_command(CLI::App& app, Options& options)
{
    CLI::App* command = app.add_subcommand("transcript", "print every request and its reply");
    command->add_flag("--json", options.json, "as one array of objects");
    command->add_option("--from", options.from, "number of the first one to print")
        ->check(at_least(1));
    command->callback([&options] {
        expect_state(options.files);
        const auto from = static_cast<std::size_t>(options.from);
        print(transcript(options.files.paths, from, options.json));
    });
}

void add_commands(CLI::App& app, Options& options)
{
    app.require_subcommand(1);
    app.fallthrough();
    Paths& paths = options.files.paths;
    Files& files = options.files;
    files.state =
        add_file_option(app, "--state", paths.state, "BOXWELLD_STATE", "folder of the state");
    files.passwd = add_file_option(
        app, "--passwd", paths.passwd, "BOXWELLD_PASSWD", "passwd file to keep in step"
    );
    files.group = add_file_option(
        app, "--group", paths.group, "BOXWELLD_GROUP", "group file to keep in step"
    );
    CLI::App* serving = app.add_subcommand("serve", "serve requests until SIGTERM");
    options.socket = add_file_option(
        *serving, "--socket", paths.socket, "BOXWELLD_SOCKET", "Unix socket to listen on"
    );
    serving->add_option("--client-timeout", options.client_timeout_ms, "in milliseconds")
        ->check(at_least(1))
        ->capture_default_str();
    serving->callback([&options, &files] {
        expect_device_or({files.state, files.passwd, files.group, options.socket});
        serve(files.paths, options.client_timeout_ms);
    });
    add_state_commands(app, options);
    add_transcript_command(app, options);
    add_order_command(app, files);
    add_chaos_command(app, files);
    add_send_command(app, files);
    add_revive_command(app);
}

/** What is wrong with the use; CLI11 does not say which command it is that is not known. */
std::string complaint(const CLI::App& app, const CLI::ParseError& error)
{
    if (error.get_name() != "RequiredError" || !app.get_subcommands().empty()) {
        return error.what();
    }
    const std::vector<std::string> words = app.remaining();
    std::string text = "which command?";
    if (!words.empty()) {
        text = std::string("unknown ") + (words[0][0] == '-' ? "option " : "command ") + words[0];
    }
    const char* mark = ": there are ";
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        text += mark + command->get_name();
        mark = ", ";
    }
    return text;
}

/** The exit status; what is wrong is said in one line. */
int run(int argc, char** argv)
{
    CLI::App app(
        "The management daemon: keeps accounts, answers transactions. Elsewhere than on a device "
        "(devkit/device/device starts one) the files that a command uses must be given.",
        "boxwelld"
    );
    app.formatter(std::make_shared<UsageFormatter>());
    Options options;
    int status = EXIT_USAGE;
    std::string problem;
    try {
        add_commands(app, options);
        app.parse(argc, argv);
        return 0;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            return app.exit(error);
        }
        problem = complaint(app, error);
    } catch (const BadUse& error) {
        problem = error.what();
    } catch (const std::exception& error) {
        status = EXIT_FAILED;
        problem = error.what();
    }
    std::fprintf(stderr, "boxwelld: %s\n", one_line(problem).c_str());
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (...) { // no memory to say it with
        return EXIT_FAILED;
    }
}
