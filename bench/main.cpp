/** Measures what ships against its peers and its floor; docs/performance.md. Runs on a private
 * device. */
#include "bench/families.h"

#include <CLI/CLI.hpp>

int main(int argc, char** argv)
{
    CLI::App app("Measures the plug-in and its libraries against their peers and their floor.");
    Options options;
    app.add_option("CASE", options.name, "only cases whose names hold this text");
    app.add_flag("--check", options.check_only, "only results, growth and counts, as tests");
    CLI11_PARSE(app, argc, argv);

    Frame frame(options);
    printHead();
    benchHashes(frame);
    benchLog(frame);
    benchLists(frame);
    benchStrings(frame);
    benchFiles(frame);
    benchLines(frame);
    benchConfig(frame);
    return frame.finish();
}
