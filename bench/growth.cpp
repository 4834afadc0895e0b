#include "bench/growth.h"

#include "bench/measure.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

constexpr int MOST_ROUNDS = 15;
constexpr int LEAST_ROUNDS = 3;
constexpr double SIZE_SECONDS = 1;
constexpr double NANO = 1e-9;
constexpr double TOO_SHORT = 0.0005;

double secondsOfOne(const Curve& curve, std::size_t times)
{
    if (curve.before_each) {
        curve.before_each();
    }
    return secondsOf(curve.work, times) / static_cast<double>(times);
}

/** Of each curve the quickest, in their order. */
std::vector<double> quickestOf(const Curves& curves)
{
    std::vector<std::size_t> times;
    for (const Curve& curve : curves) {
        times.push_back(curve.once ? 1 : calibrate(curve.work));
    }
    std::vector<double> best(curves.size(), 1e9);
    double all = 0;
    for (int round = 0; round < LEAST_ROUNDS || (round < MOST_ROUNDS && all < SIZE_SECONDS);
         ++round) {
        for (std::size_t i = 0; i < curves.size(); ++i) {
            const double seconds = secondsOfOne(curves[i], times[i]);
            best[i] = std::min(best[i], seconds);
            const double batch = seconds * static_cast<double>(times[i]);
            all += batch;
            if (!curves[i].once && batch < TOO_SHORT) { // a disturbance has met the calibration
                times[i] *= 2;
            }
        }
    }
    return best;
}

} // namespace

void Growth::measure(
    const std::string& picture,
    std::initializer_list<std::size_t> sizes,
    const std::function<Curves(std::size_t)>& at
)
{
    for (const std::size_t size : sizes) {
        const Curves curves = at(size);
        const std::vector<double> seconds = quickestOf(curves);
        std::printf("%-14s %9zu", picture.c_str(), size);
        for (std::size_t i = 0; i < curves.size(); ++i) {
            points.push_back({picture, curves[i].name, size, seconds[i]});
            std::printf("  %s %.4g ns", curves[i].name.c_str(), seconds[i] / NANO);
        }
        std::printf("\n");
        std::fflush(stdout);
    }
}

bool Growth::write(const std::string& path) const
{
    std::FILE* const file = std::fopen(path.c_str(), "we");
    if (file == nullptr) {
        return false;
    }
    std::fprintf(file, "picture\tcurve\tsize\tnanoseconds\n");
    for (const Point& point : points) {
        std::fprintf(
            file, "%s\t%s\t%zu\t%.4g\n", point.picture.c_str(), point.curve.c_str(), point.size,
            point.seconds / NANO
        );
    }
    const bool whole = std::ferror(file) == 0;
    return std::fclose(file) == 0 && whole;
}

int measureGrowthOfAll(const std::string& path)
{
    Growth growth;
    growUserQuery(growth);
    growSessions(growth);
    growLog(growth);
    growLists(growth);
    growConfig(growth);
    growReplace(growth);
    growEditing(growth);
    if (!growth.write(path)) {
        std::fprintf(stderr, "%s: %s\n", path.c_str(), std::strerror(errno));
        return 1;
    }
    return 0;
}
