// In the C library's place, for the plug-in too: a second that lasts as long as a test wants.
#include "tests/syscmd/frozen_time.h"

#include "liblst/export.h"

time_t frozen_time = 0;

EXPORTED time_t time(time_t* out) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    now.tv_sec = frozen_time == 0 ? now.tv_sec : frozen_time;
    return out == nullptr ? now.tv_sec : *out = now.tv_sec;
}
