/** Commands with all that comes of them, recorded in a file. */
#pragma once

#include "devkit/broker/plugin.h"
#include "devkit/broker/record/redaction.h"
#include "devkit/recording/facts.h"

#include <cstdint>
#include <optional>
#include <string>

/**
 * Has a plug-in's commands recorded. It must be made before the plug-in is loaded: the recording
 * library then stands between plug-in and client library.
 */
class Recorder {
  public:
    /**
     * @param path  the file, which is made, or is a recording that goes on
     * @throws BadUse  when it cannot be written or is something else
     */
    explicit Recorder(const std::string& path);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder();

    /** Has the plug-in carry out a command; a line that cannot be written is complained about once.
     */
    Answer run(const Plugin& plugin, const Command& command);

  private:
    void write(const nlohmann::ordered_json& line);
    void write_state(const Facts& state, const Redaction& redaction);
    void write_command(const Command& command, const Redaction& redaction, bool log_file);
    void write_statements(std::uint64_t from, const Redaction& redaction);
    void write_changes(const Facts& before, const Redaction& redaction);
    void write_answer(const Answer& answer, const Redaction& redaction);

    std::string path_;
    int file_ = -1;
    std::optional<Facts> known_; // the device's state, as far as it is recorded
    bool complained_ = false;
};
