/** What a recording may tell of a command: without secrets, and with pseudonyms where BWDRECORD_KEY
 * wants them. */
#pragma once

#include "devkit/broker/command.h"
#include "devkit/recording/facts.h"

#include <set>
#include <string>
#include <vector>

/** The text without hashes and pairs of them, wherever they stand in it; names stay. */
std::string without_secrets(const std::string& text);

/**
 * For one command: it knows the command's own secrets and names, so that texts about them can be
 * freed of these.
 */
class Redaction {
  public:
    explicit Redaction(const Command& command);

    /** Takes names from the device's state. */
    void learn(const Facts& facts);

    /** Operation and parameters; a pair is a stand-in that the operation takes as one. */
    std::vector<std::string> words() const;
    /** The requester's login; nothing: none came with the command. */
    std::optional<std::string> login() const;
    /** A statement, or a response. */
    std::string text(const std::string& text) const;
    FactChange change(const FactChange& change) const;

  private:
    Command command_;
    std::vector<std::string> secrets_;
    std::set<std::string> names_;
};
