// In the C library's place, for the plug-in too.
#include "tools/soak/clock.h"

#include "liblst/export.h"

time_t plugin_time = 0;

EXPORTED time_t time(time_t* out) noexcept
{
    return out == nullptr ? plugin_time : *out = plugin_time;
}
