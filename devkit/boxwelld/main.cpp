#include "devkit/boxwelld/orders.h"
#include "devkit/boxwelld/seed.h"
#include "devkit/boxwelld/server.h"
#include "devkit/boxwelld/show.h"
#include "devkit/boxwelld/transcript.h"
#include "devkit/bwdclient/frame.h"
#include "devkit/change.h"
#include "devkit/on_device.h"

#include <fcntl.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>

namespace {

constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;
constexpr int DEFAULT_CLIENT_TIMEOUT_MS = 5000;

/** Bad use that CLI11 does not see. */
class BadUse : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Options {
    Paths paths{.socket = BOXWELLD_DEFAULT_SOCKET};
    CLI::Option* state = nullptr;
    CLI::Option* passwd = nullptr;
    CLI::Option* group = nullptr;
    CLI::Option* socket = nullptr;
    int client_timeout_ms = DEFAULT_CLIENT_TIMEOUT_MS;
    bool json = false;
    int from = 1;
    std::string file;
    Order order;
    int skip = 0;
    int count = 1;
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
    {"order", "KIND [TEXT] [--skip K] [--count N]"},
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
                        "boxwelld [OPTION...] " + usage.command + ' ' + usage.arguments + '\n';
            }
        }
        return text;
    }
};

void print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

CLI::Range at_least(int least)
{
    return {least, std::numeric_limits<int>::max()};
}

/** Elsewhere than on a device, the files that are not named would be the machine's. */
void expect_device_or(std::initializer_list<const CLI::Option*> files)
{
    for (const CLI::Option* file : files) {
        if (file->empty() && !on_device()) {
            throw BadUse(no_device(file->get_name()));
        }
    }
}

/** The state, for commands that change it. */
Store open_store(const Options& options)
{
    expect_device_or({options.state, options.passwd, options.group});
    return Store(options.paths);
}

/** For commands that only read: a state that is not there is not made. */
void expect_state(const Options& options)
{
    expect_device_or({options.state});
    open_file(options.paths.database(), O_RDONLY);
}

/** Checks what an order's text must be; the usage's own errors are CLI11's. */
void check_order(Order& order, bool has_text)
{
    const bool wants_text = order.kind == "refuse" || order.kind == "reply" || order.kind == "cut";
    if (has_text != wants_text) {
        throw CLI::ValidationError(
            "order " + order.kind, wants_text ? "needs a TEXT" : "takes no TEXT"
        );
    }
    if (order.kind == "cut" && (order.text.empty() || order.text.size() > 9 ||
                                order.text.find_first_not_of("0123456789") != std::string::npos)) {
        throw CLI::ValidationError("order cut", "needs a number of bytes");
    }
    if (order.kind == "reply" && order.text.starts_with('@')) {
        order.text = read_text(order.text.substr(1));
    }
}

void add_state_commands(CLI::App& app, Options& options)
{
    CLI::App* seeding = app.add_subcommand("seed", "replace the whole state by a JSON text");
    seeding->add_option("FILE", options.file, "the JSON text, - for standard input")->required();
    seeding->callback([&options] {
        Store store = open_store(options);
        const std::string text = read_text(options.file);
        const Change change;
        seed(store, text);
        clear_transcript(options.paths);
    });
    CLI::App* showing = app.add_subcommand("show", "print the state");
    showing->add_flag("--json", options.json, "in the form that seed takes");
    showing->callback([&options] {
        expect_state(options);
        Store store(options.paths);
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
        expect_state(options);
        const auto from = static_cast<std::size_t>(options.from);
        print(transcript(options.paths, from, options.json));
    });
}

void add_order_command(CLI::App& app, Options& options)
{
    CLI::App* command =
        app.add_subcommand("order", "say what to do with a request to come, or clear the orders");
    command
        ->add_option(
            "KIND", options.order.kind,
            "refuse TEXT | refuse-bare | reply TEXT (or @FILE) | no-reply | cut BYTES | fail | die"
            " | clear"
        )
        ->required()
        ->check(CLI::IsMember(
            {"refuse", "refuse-bare", "reply", "no-reply", "cut", "fail", "die", "clear"}
        ));
    CLI::Option* text = command->add_option("TEXT", options.order.text, "what KIND needs");
    command->add_option("--skip", options.skip, "requests that pass before it")->check(at_least(0));
    command->add_option("--count", options.count, "requests that it is for; 0: all")
        ->check(at_least(0));
    command->callback([&options, text] {
        check_order(options.order, text->count() > 0);
        Store store = open_store(options);
        const Change change;
        if (options.order.kind == "clear") {
            clear_orders(store);
        } else {
            place_order(store, options.order, options.skip, options.count);
        }
    });
}

void add_commands(CLI::App& app, Options& options)
{
    app.require_subcommand(1);
    app.fallthrough();
    const auto file = [](CLI::App* to, const char* option, std::string& path, const char* variable,
                         const char* what) {
        return to->add_option(option, path, what)->envname(variable)->capture_default_str();
    };
    Paths& paths = options.paths;
    options.state = file(&app, "--state", paths.state, "BOXWELLD_STATE", "folder of the state");
    options.passwd =
        file(&app, "--passwd", paths.passwd, "BOXWELLD_PASSWD", "passwd file to keep in step");
    options.group =
        file(&app, "--group", paths.group, "BOXWELLD_GROUP", "group file to keep in step");
    CLI::App* serving = app.add_subcommand("serve", "serve requests until SIGTERM");
    options.socket =
        file(serving, "--socket", paths.socket, "BOXWELLD_SOCKET", "Unix socket to listen on");
    serving->add_option("--client-timeout", options.client_timeout_ms, "in milliseconds")
        ->check(at_least(1))
        ->capture_default_str();
    serving->callback([&options] {
        expect_device_or({options.state, options.passwd, options.group, options.socket});
        serve(options.paths, options.client_timeout_ms);
    });
    add_state_commands(app, options);
    add_transcript_command(app, options);
    add_order_command(app, options);
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
