#include "devkit/boxwelld/command_line.h"
#include "devkit/boxwelld/order_list.h"
#include "devkit/boxwelld/orders.h"
#include "devkit/change.h"

#include <memory>

namespace {

constexpr std::size_t MOST_DIGITS = 9; // of a number, which an int then holds

/** What the command line says of an order. */
struct Given {
    Order order;
    int skip = 0;
    int count = 1;
    std::string holds;
    bool json = false;
    CLI::Option* text = nullptr;
    CLI::Option* turn[3] = {}; // the options that say which requests an order is for
    CLI::Option* as_json = nullptr;

    bool is_list() const { return order.kind == "list"; }
    bool is_clear() const { return order.kind == "clear"; }
};

CLI::ValidationError bad(const Given& given, const std::string& what)
{
    return CLI::ValidationError("order " + given.order.kind, what);
}

/** Checks what goes with the kind; the usage's own errors are CLI11's. */
void check(const Given& given)
{
    const std::string& kind = given.order.kind;
    const bool wants_text = kind == "refuse" || kind == "reply" || kind == "cut" || kind == "delay";
    if ((given.text->count() > 0) != wants_text) {
        throw bad(given, wants_text ? "needs a TEXT" : "takes no TEXT");
    }
    for (const CLI::Option* option : given.turn) {
        if (option->count() > 0 && (given.is_list() || given.is_clear())) {
            throw bad(given, "takes no " + option->get_name());
        }
    }
    if (given.as_json->count() > 0 && !given.is_list()) {
        throw bad(given, "takes no --json");
    }
    const std::string& text = given.order.text;
    const bool is_number = !text.empty() && text.size() <= MOST_DIGITS &&
                           text.find_first_not_of("0123456789") == std::string::npos;
    if ((kind == "cut" || kind == "delay") && !is_number) {
        throw bad(
            given, kind == "cut" ? "needs a number of bytes" : "needs a number of milliseconds"
        );
    }
}

void carry_out(Given& given, const Files& files)
{
    check(given);
    if (given.is_list()) {
        expect_state(files);
        Store store(files.paths);
        print(order_list(store, given.json));
        return;
    }
    Order& order = given.order;
    if (order.kind == "reply" && order.text.starts_with('@')) {
        order.text = read_text(order.text.substr(1));
    }
    Store store = open_store(files);
    const Change change;
    if (given.is_clear()) {
        clear_orders(store);
    } else {
        place_order(store, order, given.skip, given.count, given.holds);
    }
}

} // namespace

void add_order_command(CLI::App& app, Files& files)
{
    const auto given = std::make_shared<Given>();
    CLI::App* command = app.add_subcommand(
        "order", "say what to do with a request to come, list the orders or clear them"
    );
    command
        ->add_option(
            "KIND", given->order.kind,
            "refuse TEXT | refuse-bare | reply TEXT (or @FILE) | no-reply | cut BYTES | delay MS | "
            "hang"
            " | fail | die | list | clear"
        )
        ->required()
        ->check(CLI::IsMember(
            {"refuse", "refuse-bare", "reply", "no-reply", "cut", "delay", "hang", "fail", "die",
             "list", "clear"}
        ));
    given->text = command->add_option("TEXT", given->order.text, "what KIND needs");
    given->turn[0] = command->add_option("--skip", given->skip, "requests that pass before it");
    given->turn[1] =
        command->add_option("--count", given->count, "requests that it is for; 0: all");
    for (CLI::Option* option : {given->turn[0], given->turn[1]}) {
        option->check(at_least(0));
    }
    given->turn[2] =
        command->add_option("--for", given->holds, "a text that a request must hold to be counted");
    given->turn[2]->check([](const std::string& text) { return text.empty() ? "it is empty" : ""; }
    );
    given->as_json = command->add_flag("--json", given->json, "list: as one object");
    command->callback([given, &files] { carry_out(*given, files); });
}
