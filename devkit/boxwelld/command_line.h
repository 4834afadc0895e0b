/** What the daemon's commands share: the options of the files, and how output and complaints are
 * made. */
#pragma once

#include "devkit/boxwelld/store.h"
#include "devkit/bwdclient/frame.h"

#include <CLI/CLI.hpp>
#include <stdexcept>
#include <string>

/** Bad use that CLI11 does not see. */
class BadUse : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** Where the files are, and the options that say so. */
struct Files {
    Paths paths{.socket = BOXWELLD_DEFAULT_SOCKET};
    CLI::Option* state = nullptr;
    CLI::Option* passwd = nullptr;
    CLI::Option* group = nullptr;
};

/** Adds the option of a file, which an environment variable can name, too. */
CLI::Option* add_file_option(
    CLI::App& app, const char* option, std::string& path, const char* variable, const char* what
);

/** Elsewhere than on a device, the files that are not named would be the machine's: BadUse. */
void expect_device_or(std::initializer_list<const CLI::Option*> files);

/** The state, for commands that change it. */
Store open_store(const Files& files);

/** For commands that only read: a state that is not there is not made. */
void expect_state(const Files& files);

/** Numbers from `least` on. */
CLI::Range at_least(int least);

void print(const std::string& text);

// Commands that have a file of their own:
void add_chaos_command(CLI::App& app, Files& files);
void add_order_command(CLI::App& app, Files& files);
void add_revive_command(CLI::App& app);
void add_send_command(CLI::App& app, Files& files);
