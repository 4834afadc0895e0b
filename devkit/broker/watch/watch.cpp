#include "devkit/broker/watch/watch.h"

#include "devkit/broker/explain/lines.h"
#include "devkit/broker/watch/watchers.h"
#include "devkit/bwdrecord/format.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <map>

namespace {

using nlohmann::json;

void print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

bool has_ended(pid_t process)
{
    return kill(process, 0) != 0 && errno == ESRCH;
}

/** Gathers each process's lines until its command is whole. */
class Commands {
  public:
    void take(const std::string& line)
    {
        const json parsed = json::parse(line, nullptr, false);
        const std::string kind = parsed.is_object() ? parsed.value("kind", "") : "";
        const auto process = parsed.is_object() ? parsed.value("pid", pid_t(0)) : 0;
        if (kind.empty() || kind == "state") {
            return;
        }
        std::string& lines = lines_[process];
        if (kind == "command") {
            lines.clear();
        }
        lines += line + '\n';
        if (kind == "answer") {
            show(process);
        }
    }

    /** A command whose process has ended gets no answer any more. */
    void end()
    {
        std::vector<pid_t> ended;
        for (const auto& [process, lines] : lines_) {
            if (has_ended(process)) {
                ended.push_back(process);
            }
        }
        for (const pid_t process : ended) {
            show(process);
        }
    }

  private:
    void show(pid_t process)
    {
        const auto lines = lines_.extract(process);
        const json header = {{"format", RECORDING_FORMAT}, {"version", RECORDING_VERSION}};
        try {
            for (const RecordedCommand& command :
                 parse_recording(header.dump() + '\n' + lines.mapped(), WATCH_FILE).commands) {
                print(block_of(command));
            }
        } catch (const BadRecording& bad) {
            std::fprintf(stderr, "broker: %s\n", bad.what());
        }
    }

    std::map<pid_t, std::string> lines_;
};

/** What is done with the watchers' file, line by line. */
class Watcher {
  public:
    explicit Watcher(bool as_recording) : as_recording_(as_recording) {}

    void take(const std::string& line)
    {
        ++lines_;
        if (lines_ > watching_.lines_before() || (as_recording_ && lines_ == 1)) {
            if (as_recording_) {
                print(line + '\n');
            } else {
                commands_.take(line);
            }
        }
    }
    void end_commands() { commands_.end(); }

    /** What has come since the last line that was taken. */
    void take_rest()
    {
        Lines all(WATCH_FILE, false);
        std::string line;
        for (std::uint64_t number = 1; all.next(line) == Lines::Next::Line; ++number) {
            if (number > lines_) {
                take(line);
            }
        }
    }

  private:
    Watching watching_;
    Commands commands_;
    bool as_recording_;
    std::uint64_t lines_ = 0; // that were taken
};

} // namespace

void watch_device(bool as_recording)
{
    Watcher watcher(as_recording);
    Lines lines(WATCH_FILE, true);
    std::fputs("broker: watching; Ctrl-C ends it\n", stderr);
    std::string line;
    for (auto next = lines.next(line); next != Lines::Next::End; next = lines.next(line)) {
        if (next == Lines::Next::Line) {
            watcher.take(line);
        } else {
            watcher.end_commands();
        }
    }
    watcher.take_rest();
}
