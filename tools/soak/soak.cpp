#include "tools/soak/soak.h"

#include "bench/count.h"
#include "devkit/boxwelld/transcript.h"
#include "tools/soak/clock.h"
#include "tools/soak/mix.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

/** Longer than any response. */
constexpr std::size_t RESPONSE_ROOM = 16384;
constexpr std::uint32_t KILLED_PERCENT = 6;
/** As many system calls as most commands make. */
constexpr std::uint32_t MOST_CALLS = 70;
/** What the allocator may take and not give back, for all commands together; a sanitizer keeps what
 * has been released. */
#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t RESIDENT_ALLOWANCE_KIB = std::size_t{1} << 20U;
#else
constexpr std::size_t RESIDENT_ALLOWANCE_KIB = 1024;
#endif
constexpr char EVENT_TOOL[] = "/usr/bin/event_push";

void make_empty(const char* path)
{
    std::ofstream(path).close();
}

std::string in_words(const std::optional<Expected>& answer)
{
    return answer ? std::to_string(answer->code) + ' ' + shown(answer->response) : "none";
}

} // namespace

Soak::Soak(std::uint32_t seed)
    : seed_(seed), privileged_(std::string(std::getenv("DEVICE_WAY")) != "proot"), store_(PATHS),
      plugin_(""), world_(explored_world(store_))
{
    plugin_time = world_.now;
    // Events are nothing that a device keeps; its tool takes longer than all the rest.
    std::filesystem::remove(EVENT_TOOL);
    std::filesystem::create_symlink("true", EVENT_TOOL);
    state_ = observed_state(store_, world_.now);
    // What the libraries set up once.
    for (const char* login : {"alice", "bob", "stranger"}) {
        run(
            {.words = {"upgradeusertosso", "stranger", "", ""},
             .credentials = login,
             .log_level = 7}
        );
    }
    begin_ = measure();
}

Soak::Run Soak::run(const Command& command)
{
    Expected answer;
    answer.response.reserve(RESPONSE_ROOM);
    std::size_t responses = 0;
    const auto before = static_cast<long>(descriptors("self"));
    const Allocations allocations = countAllocations([&] {
        const Answer given = plugin_.run(command);
        answer.code = given.code;
        responses = given.responses.size();
        answer.response.assign(given.responses.empty() ? "" : given.responses.front());
    });
    if (responses != 1) {
        throw Difference(std::to_string(responses) + " responses");
    }
    return {
        answer, static_cast<long>(allocations.left),
        static_cast<long>(descriptors("self")) - before};
}

void Soak::step(std::uint32_t number)
{
    Random random(seed_, number);
    last_step_ = "#" + std::to_string(number);
    disturb(random, number);
    const Command command = drawn_command(random, state_);
    last_step_ += ": " + shown(command);
    ++counted_["command " + shown(command.words.empty() ? "" : command.words.front())];
    const bool killed = !disk_.is_full() && privileged_ && random.percent(KILLED_PERCENT);
    const int calls = static_cast<int>(random.below(MOST_CALLS));
    if (killed) {
        forget_orders();
        const bool in_time = run_killed(plugin_, command, calls);
        note(
            in_time ? "killed" : "not killed in time", "after " + std::to_string(calls) + " calls"
        );
        daemon_.settle();
        hold_against_model(command, {}, Open::Killed);
    } else {
        hold_against_model(command, run(command), disk_.is_full() ? Open::FullDisk : Open::Nothing);
    }
    tidy_up();
}

void Soak::hold_against_model(const Command& command, const Run& run, Open open)
{
    const State found = observed_state(store_, world_.now);
    std::string nearest;
    Fate fate(open);
    const bool allowed = fate.any([&](Fate& course) {
        State state = state_;
        World world = world_;
        std::optional<Expected> answer;
        try {
            answer = carry_out(command, state, world, course);
        } catch (const Fate::Killed&) { // without an answer
        }
        if (state == found && (!run.answer || run.answer == answer)) {
            state_ = state;
            world_ = world;
            counted_["refused by a full disk"] += course.has_refused() ? 1 : 0;
            return true;
        }
        const std::string text = "answer: expected " + in_words(answer) + ", got " +
                                 in_words(run.answer) + difference(state, found);
        nearest = nearest.empty() || text.size() < nearest.size() ? text : nearest;
        return false;
    });
    if (!allowed) {
        throw Difference(nearest);
    }
    const std::string wrong = wrong_account_files(state_, world_);
    if (!wrong.empty()) {
        throw Difference(wrong);
    }
    if (run.blocks != 0 || run.descriptors != 0) {
        throw Difference(
            std::to_string(run.blocks) + " blocks of memory and " +
            std::to_string(run.descriptors) + " descriptors are left"
        );
    }
}

/** Ends what a command is not to find again: a dead daemon, and logs that would fill the device. */
void Soak::tidy_up()
{
    if (!world_.daemon_lives) {
        daemon_.revive();
        world_.daemon_lives = true;
    }
    if (disk_.is_full()) {
        return;
    }
    clear_transcript(PATHS);
    if (state_.log_file) {
        make_empty(LOG_FILE_PATH);
    }
}

void Soak::note(const std::string& what, const std::string& which)
{
    ++counted_[what];
    last_step_ += " [" + what + (which.empty() ? "]" : ' ' + which + ']');
}

Soak::Sizes Soak::measure() const
{
    const std::string daemon = std::to_string(daemon_.process());
    std::size_t lasting = descriptors(daemon); // it may be about to leave its last client
    for (int i = 0; i < 100; ++i) {
        usleep(1000);
        lasting = std::min(lasting, descriptors(daemon));
    }
    return {
        {"descriptors", descriptors("self")},
        {"descriptors of the daemon", lasting},
        {"files", lasting_files()},
        {"resident KiB", resident("self")},
        {"resident KiB of the daemon", resident(daemon)}};
}

void Soak::begin_to_measure()
{
    const Sizes first = begin_;
    begin_ = measure();
    for (const char* what : {"descriptors", "descriptors of the daemon"}) {
        begin_[what] = first.at(what); // as many from the first command on
    }
}

void Soak::end()
{
    disk_.free();
    end_ = measure();
    daemon_.end();
    for (const auto& [what, size] : end_) {
        const bool memory = what.starts_with("resident");
        if (size > begin_[what] + (memory ? RESIDENT_ALLOWANCE_KIB : 0)) {
            throw Difference(what + " have grown\n" + summary());
        }
    }
}

std::string Soak::summary() const
{
    std::string text;
    for (const auto& [what, count] : counted_) {
        text += "  " + std::to_string(count) + ' ' + what + '\n';
    }
    for (const auto& [what, size] : end_) {
        text += "  " + what + ": " + std::to_string(begin_.at(what)) + ", " + std::to_string(size) +
                '\n';
    }
    return text;
}
