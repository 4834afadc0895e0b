/** Terminals of commands on a device that stays. Failures are thrown: std::system_error. */
#pragma once

#include "devkit/boxwelld/files.h"

#include <termios.h>

/** A pseudo-terminal: what is written to one side is read from the other. */
struct PseudoTerminal {
    Fd leading;   // of the one who shows it
    Fd following; // of the command
};

/** One of the device's own, with the size and settings of the terminal `like`. */
PseudoTerminal open_terminal(const Fd& like);

/** Gives `terminal` the size of `like`; whoever runs on it is told. */
void take_size(const Fd& terminal, int like);

/** The standard input's terminal, which passes on every key as it is for as long as this lives. */
class RawTerminal {
  public:
    RawTerminal();
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;
    ~RawTerminal();

  private:
    termios before_{};
};
