#include "bench/frame.h"

#include "bench/measure.h"

#include <algorithm>
#include <cstdio>

bool Frame::wants(const std::string& name) const
{
    return name.find(options.name) != std::string::npos;
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
    table.push_back(
        {about.name, about.against, spread.median, spread.low, spread.high, about.goal, remark}
    );
    print(table.back());
}

void Frame::grows(const std::string& name, std::size_t size, const Sized& make)
{
    constexpr double MOST = 5;
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
    table.push_back({name, against, ratio, ratio, ratio, goal, remark});
    print(table.back());
    if (options.check_only && !meetsGoal(table.back())) {
        fail(name + ": more than " + against);
    }
}

int Frame::finish() const
{
    if (!options.check_only) {
        printSummary(table);
    }
    return failures == 0 ? 0 : 1;
}
