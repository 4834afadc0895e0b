/** A client's side of a command that runs on the device. */
#pragma once

#include "devkit/device/agent/signals.h"
#include "devkit/device/agent/talk.h"
#include "devkit/device/agent/terminal.h"

#include <memory>

class Conversation {
  public:
    /** With an agent; from here on signals are the command's. */
    explicit Conversation(Fd agent);

    /** Has the command run, and shows its terminal, if it has one, until it ends; its exit status.
     */
    int hold(const Request& request);

  private:
    bool hear_agent();
    void pass_on_signals();
    void read_keys();
    void write_keys();
    bool show(int wait_ms);
    void show_the_rest();

    Fd agent_;
    Fd signals_;
    Fd terminal_{-1};
    std::unique_ptr<RawTerminal> raw_;
    std::string keys_; // read and not yet taken by the terminal
    int status_ = CANNOT;
};
