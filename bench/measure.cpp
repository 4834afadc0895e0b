#include "bench/measure.h"

#include <algorithm>
#include <ctime>
#include <vector>

namespace {

constexpr double BATCH_SECONDS = 0.002;
constexpr double CASE_SECONDS = 0.5;
constexpr int GROWTH_RUNS = 7;

} // namespace

double secondsOf(const Batch& batch, std::size_t times)
{
    timespec begin = {};
    timespec end = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &begin);
    const std::shared_ptr<void> kept = batch(times);
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
    return static_cast<double>(end.tv_sec - begin.tv_sec) +
           static_cast<double>(end.tv_nsec - begin.tv_nsec) * 1e-9;
}

std::size_t calibrate(const Batch& batch)
{
    std::size_t times = 1;
    while (secondsOf(batch, times) < BATCH_SECONDS) {
        times *= 2;
    }
    return times;
}

namespace {

Batch once(const std::function<void()>& work)
{
    return [&work](std::size_t) -> std::shared_ptr<void> {
        work();
        return nullptr;
    };
}

/** One pair of batches in turn; which goes first alternates. */
struct Round {
    double ours;
    double peer;
};

Round runRound(
    const Case& about, const Batch& ours, const Batch& peer, std::size_t times, bool peer_first
)
{
    const auto timed = [&](const Batch& batch) {
        if (about.before_each) {
            about.before_each();
        }
        return secondsOf(batch, times);
    };
    Round round = {};
    if (peer_first) {
        round.peer = timed(peer);
    }
    round.ours = timed(ours);
    if (!peer_first) {
        round.peer = timed(peer);
    }
    return round;
}

/** The samples are the case's result; Google Benchmark only decides how many. */
struct Silence : benchmark::BenchmarkReporter {
    bool ReportContext(const Context& /*context*/) override { return true; }
    void ReportRuns(const std::vector<Run>& /*report*/) override {}
};

Spread spreadOf(std::vector<double>& samples)
{
    std::sort(samples.begin(), samples.end());
    const auto at = [&](double part) {
        return samples[static_cast<std::size_t>(part * static_cast<double>(samples.size() - 1))];
    };
    return {at(0.5), at(0.25), at(0.75), 0};
}

} // namespace

Spread measureRatio(const Case& about, const Batch& ours, const Batch& peer)
{
    const std::size_t times = about.before_each ? 1 : calibrate(ours);
    std::vector<double> ratios;
    double quickest = 1e9;
    bool peer_first = false;
    benchmark::ClearRegisteredBenchmarks();
    auto* loop = benchmark::RegisterBenchmark(about.name.c_str(), [&](benchmark::State& state) {
        ratios.clear(); // those of a shorter run, made to find the number of rounds
        for ([[maybe_unused]] auto round : state) {
            const auto [mine, other] = runRound(about, ours, peer, times, peer_first);
            peer_first = !peer_first;
            ratios.push_back(mine / other);
            quickest = std::min(quickest, mine / static_cast<double>(times));
            state.SetIterationTime(mine + other);
        }
    });
    loop->UseManualTime();
    if (about.rounds != 0) {
        loop->Iterations(static_cast<benchmark::IterationCount>(about.rounds));
    } else {
        loop->MinTime(CASE_SECONDS);
    }
    Silence reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    Spread spread = spreadOf(ratios);
    spread.seconds = quickest;
    return spread;
}

double quickest(const std::function<void()>& work)
{
    double best = 1e9;
    for (int i = 0; i < GROWTH_RUNS; ++i) {
        best = std::min(best, secondsOf(once(work), 1));
    }
    return best;
}

double measureGrowth(const std::function<void()>& small, const std::function<void()>& large)
{
    double best_small = secondsOf(once(small), 1);
    double best_large = secondsOf(once(large), 1);
    for (int i = 1; i < GROWTH_RUNS; ++i) { // in turn: a disturbance meets both
        best_small = std::min(best_small, secondsOf(once(small), 1));
        best_large = std::min(best_large, secondsOf(once(large), 1));
    }
    return best_large / best_small;
}
