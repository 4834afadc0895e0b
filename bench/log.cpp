// A statement by its ways: to the journal, to the file, to nobody.
#include "bench/bare_log.h"
#include "bench/families.h"
#include "bench/growth.h"

#include <unistd.h>

#include <fstream>

namespace {

constexpr auto STATEMENT = [] {
    LOG_AT(1278, Debug, "INFO [syscmd:execute]: login=%s is_owner=%d is_sh=%d\n", "alice", 1, 1);
    return true;
};

constexpr auto FLOOR = [] {
    BARE_DEBUG("INFO [syscmd:execute]: login=%s is_owner=%d is_sh=%d\n", "alice", 1, 1);
    return true;
};

void benchWay(Frame& frame, const char* name, int level, bool file)
{
    if (!frame.wants(name)) {
        return;
    }
    setLog(level, file);
    // What was written is not read back here: operations compare whole log files.
    frame.compare({.name = name, .against = "the least calls", .goal = 1.05}, STATEMENT, FLOOR);
    setLog(3, false);
}

} // namespace

void benchLog(Frame& frame)
{
    benchWay(frame, "statement to the journal", 7, false);
    benchWay(frame, "statement to the file", 3, true);
    benchWay(frame, "statement to the journal and the file", 7, true);
    benchWay(frame, "statement to nobody", 3, false);
}

void growLog(Growth& growth)
{
    setLog(3, true);
    growth.measure(
        "log", {100000, 300000, 1000000, 3000000, 10000000, 30000000, 100000000},
        [](std::size_t bytes) {
            std::ofstream(LOG_FILE) << std::string(bytes - 1, 'x') << '\n';
            Curves curves = {
                curveOf("statement to the file", STATEMENT),
                curveOf("floor: the least calls", FLOOR)};
            for (Curve& curve : curves) { // what a batch adds is gone before the next
                curve.before_each = [bytes] {
                    if (truncate(LOG_FILE, static_cast<off_t>(bytes)) != 0) {
                        std::perror(LOG_FILE);
                    }
                };
            }
            return curves;
        }
    );
    setLog(3, false);
}
