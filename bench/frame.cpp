#include "bench/frame.h"

#include "bench/measure.h"
#include "bench/ratios.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

bool Frame::wants(const std::string& name)
{
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(name);
    }
    const bool wanted = name.find(options.name) != std::string::npos;
    found = found || wanted;
    return wanted;
}

void Frame::add(Row row)
{
    if (table.empty()) {
        printHead();
    }
    print(row);
    table.push_back(std::move(row));
}

void Frame::fail(const std::string& what)
{
    std::printf("FAILED: %s\n", what.c_str());
    ++failures;
}

void Frame::measure(const Case& about, const Batch& ours, const Batch& peer)
{
    const Spread spread = measureRatio(about, ours, peer);
    char remark[32];
    std::snprintf(remark, sizeof remark, "%.3g us", spread.seconds * 1e6);
    add({about.name, about.against, spread.median, spread.low, spread.high, about.goal, remark});
}

void Frame::grows(const std::string& name, std::size_t size, const Sized& make)
{
    constexpr double MOST = 8;
    if (!options.check_only || !wants(name)) {
        return;
    }
    const double growth = measureGrowth(make(size), make(4 * size));
    std::printf("%-44s four times the work takes %.1f times as long\n", name.c_str(), growth);
    if (growth > MOST) {
        fail(name + ": grows faster than its input");
    }
}

void Frame::count(
    const std::string& name, const std::string& against, double ours, double floor, double goal
)
{
    const double ratio = floor > 0 ? ours / floor : 1 + ours;
    char remark[64];
    std::snprintf(remark, sizeof remark, "%.0f of %.0f", ours, floor);
    add({name, against, ratio, ratio, ratio, goal, remark});
    if (options.check_only && !meetsGoal(table.back())) {
        fail(name + ": more than " + against);
    }
}

void Frame::save()
{
    if (failures != 0) {
        std::printf("not saved: something failed\n");
    } else if (!writeRatios(options.committed, table)) {
        fail("saving " + options.committed + ": " + std::strerror(errno));
    } else {
        std::printf("saved in %s\n", options.committed.c_str());
    }
}

int Frame::finish()
{
    constexpr int BAD_USE = 2;
    if (!found) {
        std::fprintf(
            stderr, "bench: no case's name holds \"%s\"; there are\n", options.name.c_str()
        );
        for (const std::string& name : names) {
            std::fprintf(stderr, "  %s\n", name.c_str());
        }
        return BAD_USE;
    }
    if (!options.check_only) {
        printSummary(table);
        if (!options.committed.empty()) {
            printRegressions(table, options.committed);
        }
        if (options.save) {
            save();
        }
    }
    return failures == 0 ? 0 : 1;
}
