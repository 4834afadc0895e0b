/**
 * How cost grows with the size of a problem, beside the peers': points of which pictures are made.
 *
 *     growth.measure("list-split", {10, 100, 1000}, [](std::size_t size) {
 *         const auto text = std::make_shared<std::string>(fields(size));
 *         return Curves{
 *             curveOf("lstSplitStr", [text] { return List(lstSplitStr(',', text->c_str())); }),
 *             curveOf("g_strsplit", [text] { return StringVector(g_strsplit(text->c_str(), ",",
 * -1)); })};
 *     });
 */
#pragma once

#include "bench/frame.h"

#include <initializer_list>
#include <string>
#include <vector>

/** One side's work on a problem of a given size. */
struct Curve {
    std::string name;
    Batch work;
    std::function<void()> before_each = {}; // batch; untimed
    bool once = false;                      // a batch is one call: it uses up what was made before
};

using Curves = std::vector<Curve>;

/** A curve whose work's result is released with it. */
template<typename Work> Curve curveOf(std::string name, Work work)
{
    return {std::move(name), [work](std::size_t times) -> std::shared_ptr<void> {
                for (std::size_t i = 0; i < times; ++i) {
                    auto result = work();
                    benchmark::DoNotOptimize(result);
                }
                return nullptr;
            }};
}

class Growth {
  public:
    /**
     * Measures the curves at each size: batches in turn, of each curve the quickest. A picture may
     * be measured in several parts.
     *
     * @param at  makes the curves of a size, which share what they work on
     */
    void measure(
        const std::string& picture,
        std::initializer_list<std::size_t> sizes,
        const std::function<Curves(std::size_t)>& at
    );

    /** Writes a line a point, by tabulators: picture, curve, size, nanoseconds of one call; false,
     * and errno, when it cannot. */
    bool write(const std::string& path) const;

  private:
    struct Point {
        std::string picture;
        std::string curve;
        std::size_t size;
        double seconds;
    };
    std::vector<Point> points;
};

/** The families' pictures. */
void growUserQuery(Growth& growth);
void growSessions(Growth& growth);
void growLog(Growth& growth);
void growLists(Growth& growth);
void growConfig(Growth& growth);
void growReplace(Growth& growth);
void growEditing(Growth& growth);

/** Measures all of them into a file; the exit status. */
int measureGrowthOfAll(const std::string& path);
