/** A long life: one device, one plug-in, one daemon, many commands, each held against the model. */
#pragma once

#include "devkit/broker/plugin.h"
#include "tools/soak/contract.h"
#include "tools/soak/disk.h"
#include "tools/soak/observed.h"
#include "tools/soak/processes.h"
#include "tools/soak/random.h"

#include <stdexcept>

/** What the device did and the model does not allow. */
class Difference : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class Soak {
  public:
    explicit Soak(std::uint32_t seed);

    /** One command, behind what disturbs it. @throws Difference */
    void step(std::uint32_t number);

    /** Notes what must not grow from now on. */
    void begin_to_measure();
    /** Ends the daemon, and looks at what must not have grown. @throws Difference */
    void end();

    /** The last step in one line, and what all steps were, in words. */
    const std::string& last_step() const { return last_step_; }
    std::string summary() const;

  private:
    /** An answer, and what the plug-in left behind. */
    struct Run {
        std::optional<Expected> answer; // nothing: its broker was killed
        long blocks = 0;
        long descriptors = 0;
    };
    using Sizes = std::map<std::string, std::size_t>;

    void disturb(Random& random, std::uint32_t number);
    void place_an_order(Random& random, std::uint32_t number);
    void change_an_account(Random& random);
    void register_anew(Random& random);
    void step_clock(Random& random);
    void toggle_log_file();
    void toggle_information();
    void fill_disk();
    void clear_upgrade_flag();
    void share_memory(Random& random);
    void forget_orders();

    Run run(const Command& command);
    void hold_against_model(const Command& command, const Run& run, Open open);
    void tidy_up();
    Sizes measure() const;
    /** Counts what happened, and adds it to the step's line. */
    void note(const std::string& what, const std::string& which = "");

    std::uint32_t seed_;
    bool privileged_; // may trace processes and mount: not so under proot
    Store store_;
    Daemon daemon_;
    Plugin plugin_;
    Disk disk_;
    World world_;
    State state_;
    Sizes begin_;
    Sizes end_;
    std::string last_step_;
    std::map<std::string, std::size_t> counted_;
};
