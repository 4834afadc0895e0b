/**
 * Recordings, read: commands, each with the calls that its plug-in made of the client library, what
 * it said, what it changed and what it answered. docs/formats-recording.md tells what stands in the
 * file. Texts here are bytes again, whatever they were; those inside facts are characters.
 */
#pragma once

#include "devkit/recording/facts.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/** A file that is no whole recording; the text names file and line, and what was expected there. */
class BadRecording : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** One call of the client library. */
struct RecordedCall {
    std::size_t line = 0; // of the file, from 1 on
    std::uint64_t number =
        0;           // of its process's calls, from 1 on; a gap: lines that were not written
    double time = 0; // seconds since 1970, when it began
    std::int64_t microseconds = 0;
    int result = 0;
    int error = 0;                      // errno behind a failure
    std::optional<std::string> request; // nothing: too long to be recorded
    std::uint64_t request_length = 0;   // bytes that it had before it was redacted
    std::optional<std::string> reply;   // nothing: there was none, or it was too long
    std::uint64_t reply_length = 0;
};

/** One statement of the plug-in's log. */
struct RecordedStatement {
    std::string level;
    std::string unit;
    int line = 0;
    std::string text; // with its line end where it has one
};

struct RecordedAnswer {
    std::string code;
    std::optional<std::string> response;
    std::int64_t microseconds = 0;
};

struct RecordedCommand {
    std::size_t line = 0;           // of the file, where it begins
    std::int64_t pid = 0;           // of the process that carried it out
    std::vector<std::string> words; // operation and parameters; empty: only its calls are recorded
    std::optional<std::string> login; // the requester's; nothing: it came without
    int log_level = 0;
    double time = 0;             // seconds since 1970
    std::optional<Facts> before; // the device's state when it began; nothing: not recorded
    std::vector<RecordedCall> calls;
    std::optional<std::vector<RecordedStatement>> statements; // nothing: there was no log file
    std::vector<FactChange> changes;
    std::optional<RecordedAnswer> answer; // nothing: the recording ends before it
};

struct Recording {
    bool keyed = false;                    // whether names in it are pseudonyms
    std::vector<RecordedCommand> commands; // in the order in which they began
};

/**
 * Reads a recording. Calls outside of a broker's command are one RecordedCommand without words for
 * each process's unbroken series of them. Lines of kinds that are not known are passed over.
 *
 * @param name  what the file is called in a complaint
 * @throws BadRecording  where it is not ours, of a newer version, or a line is not whole
 */
Recording parse_recording(const std::string& text, const std::string& name);

/** @throws BadRecording  where a command has no answer: the recording was cut, or its process was
 * ended */
void expect_answers(const Recording& recording, const std::string& name);
