// Sweeping session records.
#include "bench/bare_log.h"
#include "bench/bare_sessions.h"
#include "bench/families.h"
#include "bench/growth.h"
#include "syscmd/sessions/record.h"
#include "syscmd/sessions/sweep.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace {

constexpr time_t OLD = 100000; // seconds; a record lives for 86,400

/** Fills the directory anew: `expired` of `count` records are old, spread evenly. */
void fill(std::size_t count, std::size_t expired)
{
    std::filesystem::remove_all(LOCAL_SESSION_DIRECTORY);
    std::filesystem::create_directory(LOCAL_SESSION_DIRECTORY);
    const int directory = open(LOCAL_SESSION_DIRECTORY, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const timespec old = {time(nullptr) - OLD, 0};
    const timespec times[] = {old, old};
    for (std::size_t i = 0; i < count; ++i) {
        // Tokens come in no order.
        const std::string token = std::to_string((i + 1) * 2654435761U % 4294967296U);
        const int record = openat(directory, token.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (write(record, "alice", 5) != 5) {
            break;
        }
        if (expired != 0 && i % (count / expired) == 0) {
            futimens(record, times);
        }
        close(record);
    }
    close(directory);
}

std::size_t remaining()
{
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& record :
         std::filesystem::directory_iterator(LOCAL_SESSION_DIRECTORY)) {
        ++count;
    }
    return count;
}

void benchSweep(
    Frame& frame, std::size_t count, std::size_t expired, const char* pin_owner, double goal
)
{
    const std::string name = "sweep of " + std::to_string(count) + " records, " +
                             (pin_owner != nullptr ? "pinning"
                              : expired == 0       ? "none expired"
                                                   : "half expired");
    if (!frame.wants(name)) {
        return;
    }
    Case about = {.name = name, .against = "scandirat, then fstatat", .goal = goal};
    if (pin_owner != nullptr) {
        about.against += ", open, read";
    }
    if (expired != 0) {
        about.against += ", unlink, shm_unlink in turn";
        about.before_each = [=] {
            fill(count, expired);
        };
    }
    if (count > 10000) {
        about.rounds = 7;
    } else if (expired != 0) {
        about.rounds = 31;
    }
    fill(count, expired);
    // One of each is compared by what is left; those that are timed find out nothing.
    CleanupObsoleteLocalSessions(pin_owner);
    if (remaining() != count - expired) {
        frame.fail(name + ": expired records are left, or others gone");
    }
    const auto ours = [=] {
        return CleanupObsoleteLocalSessions(pin_owner) == 0;
    };
    frame.compare(about, ours, [=] {
        bareSweep(pin_owner);
        return true;
    });
}

} // namespace

void benchSessions(Frame& frame)
{
    setLog(3, false);
    for (const std::size_t count : {std::size_t{1000}, std::size_t{50000}}) {
        if (frame.checksOnly() && count > 1000) {
            break;
        }
        benchSweep(frame, count, 0, nullptr, 1.05);
        benchSweep(frame, count, count / 2, nullptr, 1.05);
        benchSweep(frame, count, 0, "bob", 1.1);
    }
    std::filesystem::remove_all(LOCAL_SESSION_DIRECTORY);
}

void growSessions(Growth& growth)
{
    setLog(3, false);
    const std::initializer_list<std::size_t> sizes = {10, 30, 100, 300, 1000, 3000, 10000, 50000};
    const auto ours = [] {
        return CleanupObsoleteLocalSessions(nullptr);
    };
    const auto floor = [] {
        bareSweep(nullptr);
        return true;
    };
    growth.measure("sessions", sizes, [=](std::size_t count) {
        fill(count, 0);
        return Curves{curveOf("sweep, none expired", ours), curveOf("floor, none expired", floor)};
    });
    growth.measure("sessions", sizes, [=](std::size_t count) {
        Curves curves = {
            curveOf("sweep, half expired", ours), curveOf("floor, half expired", floor)};
        for (Curve& curve : curves) {
            curve.before_each = [count] {
                fill(count, count / 2);
            };
            curve.once = true;
        }
        return curves;
    });
    std::filesystem::remove_all(LOCAL_SESSION_DIRECTORY);
}
