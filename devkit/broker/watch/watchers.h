/**
 * Who watches a device: a file of the device, a recording, in which brokers write what they do for
 * as long as a watcher holds a lock on it (flock(2)).
 */
#pragma once

#include <cstdint>
#include <string>

constexpr char WATCH_FILE[] = "/run/broker-watch.jsonl";

/** Holds the file for a watcher; its last one leaves it to the next broker to remove. */
class Watching {
  public:
    /** @throws BadUse  when the file cannot be made or locked */
    Watching();
    Watching(const Watching&) = delete;
    Watching& operator=(const Watching&) = delete;
    ~Watching();

    /** How many lines it had when the watching began, of other watchers' past. */
    std::uint64_t lines_before() const { return lines_before_; }

  private:
    int file_ = -1;
    std::uint64_t lines_before_ = 0;
};

/** Whether somebody watches the device on which this runs; a file that nobody watches is removed.
 */
bool is_watched();

/**
 * Appends to the watchers' file what this process has written to the recording `path` behind
 * `offset` bytes of it. What fails is passed over: the recording is what counts.
 */
void show_watchers(const std::string& path, std::uint64_t offset);
