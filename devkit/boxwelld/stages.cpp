#include "devkit/boxwelld/stages.h"

#include <ctime>
#include <utility>

namespace {

constexpr std::size_t NONE = std::size(STAGES);

std::size_t present = NONE;
std::chrono::nanoseconds since{};
StageTimes times{};

/** Charges the time until now to the stage that is left. */
std::size_t leave_for(std::size_t next)
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    const auto spent = std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
    if (present != NONE) {
        times[present] += spent - since;
    }
    since = spent;
    return std::exchange(present, next);
}

} // namespace

Timed::Timed(Stage stage) : outer_(leave_for(static_cast<std::size_t>(stage))) {}

Timed::~Timed()
{
    leave_for(outer_);
}

StageTimes take_stage_times()
{
    return std::exchange(times, {});
}
