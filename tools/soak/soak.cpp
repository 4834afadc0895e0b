#include "tools/soak/soak.h"

#include "bench/count.h"
#include "devkit/boxwelld/transcript.h"
#include "tools/soak/clock.h"
#include "tools/soak/mix.h"

#include <filesystem>
#include <fstream>

namespace {

/** Longer than any response. */
constexpr std::size_t RESPONSE_ROOM = 16384;
/** A tenth of the commands are killed within as many system calls as most commands make. */
constexpr std::uint64_t KILLED_PERCENT = 4;
constexpr std::uint64_t MOST_CALLS = 90;
/** What the allocator may take and not give back, for all commands together. */
constexpr std::size_t RESIDENT_ALLOWANCE_KIB = 1024;
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

Soak::Soak(std::uint64_t seed)
    : seed_(seed), store_(PATHS), plugin_(""), world_(explored_world(store_))
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

void Soak::step(std::uint64_t number)
{
    Random random(seed_, number);
    last_step_ = "#" + std::to_string(number);
    disturb(random, number);
    const Command command = drawn_command(random, state_);
    note("command " + shown(command.words.empty() ? "" : command.words.front()));
    last_step_ += ": " + shown(command);
    const bool killed = !disk_.is_full() && random.percent(KILLED_PERCENT);
    const int calls = static_cast<int>(random.below(MOST_CALLS));
    if (killed) {
        forget_orders();
        last_step_ += ", killed after " + std::to_string(calls) + " calls";
        const bool was_killed = run_killed(plugin_, command, calls);
        note(was_killed ? "killed" : "not killed in time");
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
            note(course.has_refused() ? "refused by a full disk" : "held against the model");
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

void Soak::note(const std::string& what)
{
    ++counted_[what];
}

Soak::Sizes Soak::measure() const
{
    const std::string daemon = std::to_string(daemon_.process());
    std::size_t lasting = descriptors(daemon); // it may be about to leave its last client
    for (int i = 0; i < 100; ++i) {
        usleep(1000);
        lasting = std::min(lasting, descriptors(daemon));
    }
    return {descriptors("self"), resident("self"), lasting, resident(daemon), lasting_files()};
}

void Soak::begin_to_measure()
{
    begin_ = measure();
}

void Soak::end()
{
    disk_.free();
    end_ = measure();
    daemon_.end();
    std::string grown;
    const auto expect = [&grown](bool holds, const char* what) {
        grown += holds ? "" : std::string(" ") + what;
    };
    expect(end_.descriptors == begin_.descriptors, "descriptors");
    expect(end_.daemon_descriptors == begin_.daemon_descriptors, "descriptors of the daemon");
    expect(end_.files == begin_.files, "files");
#ifndef __SANITIZE_ADDRESS__ // which keeps what has been released
    expect(end_.resident <= begin_.resident + RESIDENT_ALLOWANCE_KIB, "memory");
    expect(
        end_.daemon_resident <= begin_.daemon_resident + RESIDENT_ALLOWANCE_KIB,
        "memory of the daemon"
    );
#endif
    if (!grown.empty()) {
        throw Difference("grown:" + grown + '\n' + summary());
    }
}

std::string Soak::summary() const
{
    std::string text;
    for (const auto& [what, count] : counted_) {
        text += "  " + std::to_string(count) + ' ' + what + '\n';
    }
    const auto grown = [&text](const char* what, std::size_t from, std::size_t to) {
        text += std::string("  ") + what + ": " + std::to_string(from) + ", " + std::to_string(to) +
                '\n';
    };
    grown("resident KiB", begin_.resident, end_.resident);
    grown("resident KiB of the daemon", begin_.daemon_resident, end_.daemon_resident);
    grown("descriptors", begin_.descriptors, end_.descriptors);
    grown("descriptors of the daemon", begin_.daemon_descriptors, end_.daemon_descriptors);
    grown("files", begin_.files.size(), end_.files.size());
    return text;
}
