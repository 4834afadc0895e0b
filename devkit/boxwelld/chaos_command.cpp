#include "devkit/boxwelld/chaos.h"
#include "devkit/boxwelld/command_line.h"
#include "devkit/change.h"

#include <memory>

namespace {

/** What the command line says of a plan. */
struct Given {
    std::string off;
    std::string kinds = DEFAULT_CHAOS_KINDS;
    Chaos chaos;
    CLI::Option* seed = nullptr;
    CLI::Option* rate = nullptr;
    CLI::Option* others[2] = {};
};

/** Either a plan, which needs both, or its end, which takes nothing. */
void check(const Given& given)
{
    const bool ends = !given.off.empty();
    for (const CLI::Option* option : {given.seed, given.rate, given.others[0], given.others[1]}) {
        const bool needed = option == given.seed || option == given.rate;
        if (option->count() > 0 ? ends : needed && !ends) {
            throw CLI::ValidationError(
                ends ? "chaos off" : "chaos",
                (ends ? "takes no " : "needs a ") + option->get_name() + (ends ? "" : ", or off")
            );
        }
    }
}

void carry_out(Given& given, const Files& files)
{
    check(given);
    Store store = open_store(files);
    const Change change;
    if (!given.off.empty()) {
        end_chaos(store);
        return;
    }
    given.chaos.kinds = chaos_kinds(given.kinds);
    begin_chaos(store, given.chaos);
}

std::string complaint_about_kinds(const std::string& list)
{
    try {
        chaos_kinds(list);
        return "";
    } catch (const Refusal& bad) {
        return bad.what();
    }
}

} // namespace

void add_chaos_command(CLI::App& app, Files& files)
{
    const auto given = std::make_shared<Given>();
    CLI::App* command =
        app.add_subcommand("chaos", "meet requests with faults by a plan, or end it");
    command->add_option("OFF", given->off, "off ends the plan")->check(CLI::IsMember({"off"}));
    given->seed = command->add_option("--seed", given->chaos.seed, "what the plan follows from");
    given->seed->check(CLI::Range(std::int64_t{0}, std::int64_t{UINT32_MAX}));
    given->rate = command->add_option("--rate", given->chaos.rate, "percent of the requests");
    given->rate->check(CLI::Range(LEAST_RATE, GREATEST_RATE));
    given->others[0] = command->add_option("--kinds", given->kinds, "faults, separated by commas");
    given->others[0]->check(complaint_about_kinds)->capture_default_str();
    given->others[1] =
        command->add_option("--count", given->chaos.count, "requests that it is for; 0: all");
    given->others[1]->check(at_least(0))->capture_default_str();
    command->callback([given, &files] { carry_out(*given, files); });
}
