/**
 * The frame that a case stands in: work of the plug-in beside a peer's or the floor's.
 *
 *     frame.compare(
 *         {.name = "lstSplitStr, 100,000 fields", .against = "g_strsplit", .goal = 0.7},
 *         [&] { return List(lstSplitStr(',', text)); },
 *         [&] { return GList(g_strsplit(text, ",", -1)); }
 *     );
 *
 * What the two return is compared first: a wrong result fails the run. Then both are timed in short
 * batches that alternate, and the ratio of each pair of batches is one sample.
 */
#pragma once

#include "bench/results.h"
#include "bench/table.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/** How the program was called. */
struct Options {
    std::string name; // cases whose names hold this text; empty: all
    bool check_only =
        false;             // results, growth and counts only, none of which depends on the machine
    std::string committed; // the file of ratios that a run is held against; empty: none
    bool save = false;     // the ratios of this run are to be the committed ones
};

/** One case. */
struct Case {
    std::string name;
    std::string against;
    double goal = 0;                        // the largest ratio wanted; 0: reported only
    bool keep = false;                      // releasing the results is not timed
    std::function<void()> before_each = {}; // untimed; makes every batch one call
    std::size_t rounds = 0;                 // pairs of batches; 0: as many as half a second takes
};

/** Runs work this many times; what it returns is released untimed. */
using Batch = std::function<std::shared_ptr<void>(std::size_t)>;

/** Work on a problem of a given size. */
using Sized = std::function<std::function<void()>(std::size_t)>;

class Frame {
  public:
    explicit Frame(Options wanted) : options(std::move(wanted)) {}

    /** Whether a case is to run; cases ask before they make expensive inputs. */
    bool wants(const std::string& name);
    bool checksOnly() const { return options.check_only; }

    template<typename Ours, typename Peer> void compare(const Case& about, Ours ours, Peer peer)
    {
        if (!wants(about.name)) {
            return;
        }
        if (!agree(about, ours, peer)) {
            fail(about.name + ": the results of " + about.against + " differ");
        } else if (!options.check_only) {
            measure(about, repeat(about, ours), repeat(about, peer));
        }
    }

    /**
     * Checks that four times the work takes at most eight times as long, best of several: midway
     * between what grows with its input and what grows with its square.
     */
    void grows(const std::string& name, std::size_t size, const Sized& make);

    /** Notes a count beside the floor's; one that misses its goal is a failure where only such are
     * looked at. */
    void count(
        const std::string& name, const std::string& against, double ours, double floor, double goal
    );

    /** Notes a failure, which ends the run with a status that is not 0. */
    void fail(const std::string& what);

    /** Prints how many goals were met, or which cases there are when none was wanted; the exit
     * status. Then what has become worse since the committed run, which this one replaces if it
     * is to be saved and nothing failed. */
    int finish();

  private:
    template<typename Ours, typename Peer>
    static bool agree(const Case& about, Ours ours, Peer peer)
    {
        if (about.before_each) {
            about.before_each();
        }
        const auto mine = ours();
        if (about.before_each) {
            about.before_each();
        }
        return same(mine, peer());
    }

    template<typename Work> static Batch repeat(const Case& about, Work work)
    {
        using Result = decltype(work());
        if (about.keep) {
            return [work](std::size_t times) {
                const auto results = std::make_shared<std::vector<Result>>();
                results->reserve(times);
                for (std::size_t i = 0; i < times; ++i) {
                    results->push_back(work());
                }
                return results;
            };
        }
        return [work](std::size_t times) -> std::shared_ptr<void> {
            for (std::size_t i = 0; i < times; ++i) {
                auto result = work();
                benchmark::DoNotOptimize(result);
            }
            return nullptr;
        };
    }

    void measure(const Case& about, const Batch& ours, const Batch& peer);
    void add(Row row);
    void save();

    Options options;
    std::vector<std::string> names; // of all cases, in their order
    bool found = false;             // a case that is wanted
    Table table;
    int failures = 0;
};
