/** What is lost in a failure, and how it is mended: docs/recipes.tsv. */
#pragma once

#include "devkit/broker/explain/story.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

struct Recipe {
    std::string_view name, what, when, in_the_log, remedy;
    std::string_view operation; // of no other; empty: of all
    std::string_view said;      // what tells of it: "FUNCTION:TEXT" or "=FACT" + … | …
    std::string_view unless;    // what tells that it did not happen, likewise
};

const std::vector<Recipe>& recipes();

/** What is known of commands beyond their statements, from the commands before. */
class Memory {
  public:
    /**
     * The facts that hold for a command, which is then remembered:
     *  - "owner": its account is the owner's, as far as is known
     *  - "owner in sky-hold": it gave the owner's account that group
     *  - "former owner denied", "renamed owner denied": nobody is owner any more, by the name that
     *    was the owner's, or by the one that was to be
     *  - "old owner admitted": after a rename whose owner file was not written
     *  - "refused without a reason": a change, by the daemon
     *  - "at sign": its account may be named by an address
     *  - "removed again": a session's record that an earlier command had removed
     */
    std::set<std::string> facts_of(const Story& story);

  private:
    bool is_owners(const std::string& name) const;
    void note_rename(const Story& story);

    std::set<std::string> owners_;  // logins that were the owner's, in lower case
    std::set<std::string> renamed_; // what the owner's account was to be called, likewise
    std::string old_owner_;         // whose owner file was not written
    std::set<std::string> removed_; // records, with their time
};

/** The recipes that may be needed after a command. */
std::vector<const Recipe*> recipes_for(const Story& story, const std::set<std::string>& facts);
