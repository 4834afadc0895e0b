/** The broker for one command whose calls fail as asked: the plug-in's units are linked in. */
#include "devkit/broker/failing/asked_faults.h"
#include "devkit/broker/output.h"
#include "devkit/broker/report.h"
#include "devkit/on_device.h"
#include "syscmd/handler.h"

namespace {

using Words = std::vector<std::string>;

std::vector<Trial> read_faults(const Options& options)
{
    std::vector<Trial> trials;
    for (const std::string& text : options.faults) {
        trials.push_back({parse_fault(text)});
    }
    if (!options.plugin.empty() || !options.record.empty()) {
        throw BadUse("--fail has a plug-in of its own, and goes without --plugin and --record");
    }
    if (!on_device()) {
        throw BadUse("this is no device: devkit/device/device starts one; --fail works nowhere else"
        );
    }
    return trials;
}

/** Says of a fault that did not strike why not. */
void tell_unreached(const std::string& text, const Trial& trial)
{
    if (!trial.struck) {
        std::fprintf(
            stderr, "broker: --fail %s: not reached, calls made: %d\n", text.c_str(), trial.seen
        );
    }
}

int run(const Words& words)
{
    const Options options = parse_run(words);
    std::vector<Trial> trials = read_faults(options);
    const Answer answer = carry_out(options.command, [&](ITransaction* transaction) {
        withFaults(trials, [&] { execute(transaction); });
    });
    print(options.json ? text_of(as_json(options.command, answer)) : for_people(answer));
    for (std::size_t i = 0; i < trials.size(); ++i) {
        tell_unreached(options.faults[i], trials[i]);
    }
    return exit_status(carried_out(answer));
}

} // namespace

/** Its arguments are those of `broker run`, behind that word. */
int main(int argc, char** argv)
{
    try {
        return run(argc > 2 ? Words(argv + 2, argv + argc) : Words());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "broker: %s\n", error.what());
        return EXIT_BAD_USE;
    }
}
