#include "devkit/boxwelld/orders.h"
#include "devkit/boxwelld/seed.h"
#include "devkit/boxwelld/server.h"
#include "devkit/boxwelld/show.h"
#include "devkit/boxwelld/transcript.h"
#include "devkit/bwdclient/frame.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

namespace {

constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;
constexpr int DEFAULT_CLIENT_TIMEOUT_MS = 5000;

struct Options {
    Paths paths{.socket = BOXWELLD_DEFAULT_SOCKET};
    int client_timeout_ms = DEFAULT_CLIENT_TIMEOUT_MS;
    bool json = false;
    std::size_t from = 1;
    std::string file;
    Order order;
    int skip = 0;
    int count = 1;
};

void print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
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
        const std::string text = read_text(options.file);
        Store store(options.paths);
        seed(store, text);
        clear_transcript(options.paths);
    });
    CLI::App* showing = app.add_subcommand("show", "print the state");
    showing->add_flag("--json", options.json, "in the form that seed takes");
    showing->callback([&options] {
        Store store(options.paths);
        print(show(store, options.json));
    });
}

void add_transcript_command(CLI::App& app, Options& options)
{
    CLI::App* command = app.add_subcommand("transcript", "print every request and its reply");
    command->add_flag("--json", options.json, "as one array of objects");
    command->add_option("--from", options.from, "number of the first one to print");
    command->callback([&options] { print(transcript(options.paths, options.from, options.json)); });
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
    command->add_option("--skip", options.skip, "requests that pass before it")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--count", options.count, "requests that it is for; 0: all")
        ->check(CLI::NonNegativeNumber);
    command->callback([&options, text] {
        check_order(options.order, text->count() > 0);
        Store store(options.paths);
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
    app.add_option("--state", options.paths.state, "folder of the state")
        ->envname("BOXWELLD_STATE")
        ->capture_default_str();
    app.add_option("--passwd", options.paths.passwd, "passwd file to keep in step")
        ->envname("BOXWELLD_PASSWD")
        ->capture_default_str();
    app.add_option("--group", options.paths.group, "group file to keep in step")
        ->envname("BOXWELLD_GROUP")
        ->capture_default_str();
    CLI::App* serving = app.add_subcommand("serve", "serve requests until SIGTERM");
    serving->add_option("--socket", options.paths.socket, "Unix socket to listen on")
        ->envname("BOXWELLD_SOCKET")
        ->capture_default_str();
    serving->add_option("--client-timeout", options.client_timeout_ms, "in milliseconds")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    serving->callback([&options] { serve(options.paths, options.client_timeout_ms); });
    add_state_commands(app, options);
    add_transcript_command(app, options);
    add_order_command(app, options);
}

/** The exit status; what is wrong is said in one line. */
int run(int argc, char** argv)
{
    CLI::App app("The management daemon: keeps accounts, answers transactions.", "boxwelld");
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
