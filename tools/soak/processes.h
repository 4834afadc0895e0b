/** The management daemon of the soak, and a broker that does not live long. */
#pragma once

#include "devkit/broker/plugin.h"

#include <sys/types.h>

/** Takes the place of the device's daemon, and is started anew when it has been ended. */
class Daemon {
  public:
    Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;
    ~Daemon();

    /** Starts it again when an order has ended it. */
    void revive();
    /** Waits until it has dealt with all that it was sent. */
    void settle();
    /** Ends it as a device does; a status other than 0 is a failure. */
    void end();
    pid_t process() const { return process_; }

  private:
    void start();
    pid_t process_ = -1;
};

/** Carries the command out in a process of its own, which is killed when it has made that many
 * system calls; whether it came so far. */
bool run_killed(const Plugin& plugin, const Command& command, int calls);
