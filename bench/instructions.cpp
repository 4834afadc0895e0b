#include "bench/instructions.h"

#include <valgrind/callgrind.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

void dumpInstructions(const std::function<void()>& work)
{
    for (int i = 0; i < 10; ++i) {
        work(); // so that nothing is done for the first time
    }
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    work();
    CALLGRIND_DUMP_STATS;
    CALLGRIND_STOP_INSTRUMENTATION;
}

std::vector<double> runCallgrind()
{
    char folder[] = "/tmp/bench.XXXXXX";
    if (mkdtemp(folder) == nullptr) {
        return {};
    }
    const std::string base = std::string(folder) + "/dump";
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string command =
        "valgrind -q --tool=callgrind --instr-atstart=no --callgrind-out-file=" + base + " '" +
        program + "' --instructions >/dev/null 2>&1";
    std::vector<double> counts;
    if (std::system(command.c_str()) == 0) {
        std::ifstream dump;
        for (int i = 1; dump.open(base + "." + std::to_string(i)), dump.is_open(); ++i) {
            for (std::string word; dump >> word;) {
                if (word == "totals:") {
                    counts.emplace_back();
                    dump >> counts.back();
                }
            }
            dump.close();
            dump.clear();
        }
    }
    std::filesystem::remove_all(folder);
    return counts;
}
