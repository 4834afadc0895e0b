// When a run of the benchmarks is worse than the committed one, and what becomes of its file.
#include "bench/ratios.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

namespace {

Row rowOf(double low, double ratio, double high)
{
    return {"sort", "a peer", ratio, low, high, 1.1};
}

struct Comparison {
    const char* what;
    Row earlier;
    Row now;
    bool worse;
};

TEST(Ratios, WhenOneIsWorse)
{
    const Comparison comparisons[] = {
        {"the same", rowOf(0.9, 1.0, 1.1), rowOf(0.9, 1.0, 1.1), false},
        {"above, within the spread", rowOf(0.9, 1.0, 1.1), rowOf(1.1, 1.3, 1.4), false},
        {"beyond it", rowOf(0.9, 1.0, 1.1), rowOf(1.11, 1.3, 1.4), true},
        {"beyond it, by 2 %", rowOf(0.999, 1.0, 1.001), rowOf(1.002, 1.02, 1.03), false},
        {"beyond it, by more", rowOf(0.999, 1.0, 1.001), rowOf(1.002, 1.021, 1.03), true},
        {"better", rowOf(0.9, 1.0, 1.1), rowOf(0.3, 0.4, 0.5), false},
        {"equal counts", rowOf(1.01, 1.01, 1.01), rowOf(1.01, 1.01, 1.01), false},
        {"one more of ten million", rowOf(1.5, 1.5, 1.5), rowOf(1.5000001, 1.5000001, 1.5000001), true},
        {"one less", rowOf(1.5, 1.5, 1.5), rowOf(1.4999999, 1.4999999, 1.4999999), false},
    };
    for (const Comparison& one : comparisons) {
        const auto lines = compareRatios({one.now}, {one.earlier});
        ASSERT_EQ(lines.size(), 1U) << one.what;
        EXPECT_EQ(lines[0].substr(0, 10) == "REGRESSION", one.worse) << one.what;
    }
}

TEST(Ratios, TellsWhatIsNewAndWhatIsWorse)
{
    Row other = rowOf(2, 2, 2);
    other.against = "another";
    const Row worse = rowOf(1.2, 1.25, 1.3);
    const Row earlier = rowOf(0.95, 1, 1.05);
    EXPECT_EQ(compareRatios({worse, other}, {earlier}),
        (std::vector<std::string>{
            "REGRESSION: sort, against a peer: 1.250 [1.200, 1.300], committed 1.000 [0.950, 1.050]",
            "not among the committed ratios: sort, against another"}));
    EXPECT_EQ(compareRatios({earlier}, {other, earlier}),
        std::vector<std::string>{"no regression beside the committed ratios"});
}

/** A file that is gone with the test. */
class RatiosFile : public testing::Test {
  protected:
    RatiosFile()
    {
        char name[] = "/tmp/ratios.XXXXXX";
        close(mkstemp(name));
        path = name;
    }
    ~RatiosFile() override { unlink(path.c_str()); }

    std::string path;
};

TEST_F(RatiosFile, KeepsWhatIsCompared)
{
    constexpr double COUNT = 9956291.0 / 9955712;
    const Table table = {rowOf(0.912, 1.234, 2.5), rowOf(COUNT, COUNT, COUNT)};
    ASSERT_TRUE(writeRatios(path, table));
    const KeptRatios kept = readRatios(path);
    EXPECT_EQ(kept.trouble, "");
    ASSERT_EQ(kept.rows.size(), 2U);
    EXPECT_EQ(kept.rows[0].name + kept.rows[0].against, "sorta peer");
    EXPECT_EQ(kept.rows[0].low, 0.912);
    EXPECT_EQ(kept.rows[0].ratio, 1.234);
    EXPECT_EQ(kept.rows[0].high, 2.5);
    EXPECT_EQ(kept.rows[0].goal, 1.1);
    EXPECT_EQ(compareRatios({table[1]}, {kept.rows[1]}).size(), 1U);
    EXPECT_EQ(compareRatios({table[1]}, {kept.rows[1]})[0], "no regression beside the committed ratios");
}

TEST_F(RatiosFile, IsRefusedWithASentence)
{
    const std::string head = "case\tagainst\tratio\tlower\tupper\tgoal\n";
    const struct {
        std::string text;
        std::string trouble;
    } files[] = {
        {"", " cannot be read, or is empty"},
        {"<html>\n", " does not begin as a file of ratios"},
        {head + "a\tb\t1\t1\t1\t0\na\tb\t1\t1\t1\n", ", line 3, is no ratio"},
        {head + "a\tb\t1\t1\t1\t0\t9\n", ", line 2, is no ratio"},
        {head + "a\tb\t1\tx\t1\t0\n", ", line 2, is no ratio"},
        {head + "a\tb\t1\t1\tinf\t0\n", ", line 2, is no ratio"},
        {head + "a\tb\t-1\t1\t1\t0\n", ", line 2, is no ratio"},
        {head + "\tb\t1\t1\t1\t0\n", ", line 2, is no ratio"},
        {head + "a\tb\t1\t1\t1\t0 \n", ", line 2, is no ratio"},
        {head + "\n", ", line 2, is no ratio"},
    };
    for (const auto& [text, trouble] : files) {
        std::ofstream(path) << text;
        const KeptRatios kept = readRatios(path);
        EXPECT_EQ(kept.trouble, path + trouble) << text;
        EXPECT_TRUE(kept.rows.empty()) << text;
    }
    EXPECT_EQ(readRatios("/nowhere/ratios").trouble, "/nowhere/ratios cannot be read, or is empty");
    EXPECT_FALSE(writeRatios("/nowhere/ratios", {}));
}

} // namespace
