// A statement by its ways: to the journal, to the file, to nobody.
#include "bench/bare_log.h"
#include "bench/families.h"

namespace {

void benchWay(Frame& frame, const char* name, int level, bool file)
{
    if (!frame.wants(name)) {
        return;
    }
    setLog(level, file);
    // What was written is not read back here: operations compare whole log files.
    frame.compare(
        {.name = name, .against = "the least calls", .goal = 1.05},
        [] {
            LOG_AT(
                1278, Debug, "INFO [syscmd:execute]: login=%s is_owner=%d is_sh=%d\n", "alice", 1, 1
            );
            return true;
        },
        [] {
            BARE_DEBUG("INFO [syscmd:execute]: login=%s is_owner=%d is_sh=%d\n", "alice", 1, 1);
            return true;
        }
    );
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
