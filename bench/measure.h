/** Timing two pieces of work against each other. */
#pragma once

#include "bench/frame.h"

/** A median and its quartiles. */
struct Spread {
    double median;
    double low;
    double high;
    double seconds; // of one piece of our work, for orientation
};

/** The ratio of the processor time of `ours` to that of `peer`, from pairs of batches in turn. */
Spread measureRatio(const Case& about, const Batch& ours, const Batch& peer);

/** Processor seconds of work, the quickest of several runs. */
double quickest(const std::function<void()>& work);

/** How many times as long the larger work takes, by the quickest of several runs of each. */
double measureGrowth(const std::function<void()>& small, const std::function<void()>& large);

/** The processor time of this thread in a batch: what other programs do meanwhile is not ours. */
double secondsOf(const Batch& batch, std::size_t times);

/** How many times a batch is to do its work to take long enough for the clock. */
std::size_t calibrate(const Batch& batch);
