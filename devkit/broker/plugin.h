/** A plug-in, loaded as the broker loads it. */
#pragma once

#include "common/common.h"
#include "devkit/broker/command.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/** What a command came to. */
struct Answer {
    TTransactionCode code = CODE_UNDEFINED;
    std::vector<std::string> responses;
    double milliseconds = 0; // spent in the plug-in
};

/** A file in the folder of this program. */
std::filesystem::path beside_broker(const char* name);

/** Has `execute` carry out the command, and takes the time. */
Answer carry_out(const Command& command, const std::function<void(ITransaction*)>& execute);

class Plugin {
  public:
    /**
     * Loads the plug-in, which stays loaded; an empty path means libsyscmd.so beside the broker.
     *
     * @throws std::runtime_error  with the loader's words
     */
    explicit Plugin(std::string path);

    /** Has the plug-in carry out one command. */
    Answer run(const Command& command) const;

    /**
     * A password's hash pair in the form that operations take: Base64 of the SMB hash, a colon and
     * the system hash.
     *
     * @throws BadUse  when the plug-in makes no hash of it, as of an empty one
     */
    std::string hash_pair(const std::string& password) const;

  private:
    template<class Function> Function* symbol(const char* name) const;

    std::string path_;
    void* library_;
};
