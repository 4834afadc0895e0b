/** Plays the daemon's side of a recorded command. */
#pragma once

#include "devkit/broker/replay/renaming.h"
#include "devkit/recording/recording.h"

#include <cstddef>
#include <string>
#include <vector>

class Player {
  public:
    /** Loads the library by which plug-ins that are loaded later have their requests answered here.
     * @throws std::runtime_error  when it cannot be loaded */
    static void take_the_daemons_place();

    /** Answers by this command's recording from now on, until it goes. */
    Player(const RecordedCommand& command, bool keyed);
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;
    ~Player();

    /** The requests that were made, without secrets, and with the recording's random names. */
    std::vector<std::string> made() const;

    const Renaming& renaming() const { return renaming_; }

  private:
    static int answer(char* request, int length, char** reply, int* reply_length);

    int play(const std::string& request, char** reply, int* reply_length);
    const RecordedCall* find(const std::string& request);

    const RecordedCommand& command_;
    Renaming renaming_;
    std::vector<bool> played_; // of the recorded calls
    std::size_t next_ = 0;     // the recorded call that is expected
    std::vector<std::string> made_;
};
