/** Measures what ships against its peers and its floor; docs/performance.md. Runs on a private
 * device. */
#include "bench/families.h"
#include "bench/growth.h"

#include <malloc.h>

#include <CLI/CLI.hpp>

int main(int argc, char** argv)
{
    CLI::App app("Measures the plug-in and its libraries against their peers and their floor.");
    Options options;
    CLI::Option* const name =
        app.add_option("CASE", options.name, "only cases whose names hold this text");
    app.add_flag("--check", options.check_only, "only results, growth and counts, as tests");
    CLI::Option* const committed = app.add_option(
        "--committed", options.committed, "a file of ratios that this run is held against"
    );
    app.add_flag("--save", options.save, "this run's ratios replace them; of all cases")
        ->needs(committed)
        ->excludes(name);
    bool instructions = false;
    app.add_flag(
           "--instructions", instructions, "one run of each operation and floor, for callgrind"
    )
        ->group("");
    std::string points;
    app.add_option("--plot", points, "measures how cost grows; the points go into this file");
    CLI11_PARSE(app, argc, argv);
    if (instructions) {
        runUnderCallgrind();
        return 0;
    }

    // Freed memory stays in the process, so that clearing pages, which both sides pay alike, hides
    // nothing.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 32 << 20);

    if (!points.empty()) {
        return measureGrowthOfAll(points);
    }
    Frame frame(options);
    benchHashes(frame);
    benchLog(frame);
    benchUserQuery(frame);
    benchOperations(frame);
    benchSessions(frame);
    benchLists(frame);
    benchReplace(frame);
    benchCut(frame);
    benchEditing(frame);
    benchFiles(frame);
    benchLines(frame);
    benchConfig(frame);
    benchLoad(frame);
    return frame.finish();
}
