/** The running daemon, as a program beside it sees what it spends. */
#pragma once

#include "devkit/boxwelld/stages.h"

#include <sys/types.h>

#include <ctime>
#include <fstream>
#include <string>

/** What the daemon has spent on a command. */
struct Spent {
    double microseconds = 0;                        // of the processor
    std::array<double, std::size(STAGES)> stages{}; // of these, by its own account
    double bytes = 0;                               // that it has written, the socket's included
};

class SeenDaemon {
  public:
    /** The one that listens on `socket`; `transcript` is where it appends. */
    SeenDaemon(const std::string& socket, const std::string& transcript);

    /** What it has spent since the last call. */
    Spent spent();

  private:
    double processor() const;
    double written() const;

    pid_t process_;
    clockid_t clock_{};
    std::ifstream transcript_;
    double processor_before_ = 0;
    double written_before_ = 0;
};
