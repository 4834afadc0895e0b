// A statement by its ways: to the journal, to the file, to nobody.
#include "bench/bare_log.h"
#include "bench/families.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

/** Makes or removes the log file, empty. */
void setLogFile(bool exists)
{
    unlink(LOG_FILE);
    if (exists) {
        close(open(LOG_FILE, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    }
}

void benchWay(Frame& frame, const char* name, int level, bool file)
{
    setLogFile(file);
    MAX_LOG_LEVEL = level;
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
    MAX_LOG_LEVEL = 3;
    setLogFile(false);
}

} // namespace

void benchLog(Frame& frame)
{
    benchWay(frame, "statement to the journal", 7, false);
    benchWay(frame, "statement to the file", 3, true);
    benchWay(frame, "statement to nobody", 3, false);
}
