/**
 * The random parts of requests: a name that the plug-in makes up, for an account that is in the
 * way, ends in four hexadecimal digits, others in every run.
 */
#pragma once

#include <map>
#include <string>
#include <vector>

class Renaming {
  public:
    /**
     * @param keyed  whether the recording's names are pseudonyms, of which no part is the old name
     * @param words  the command's: a made-up name begins with one of them
     */
    Renaming(bool keyed, std::vector<std::string> words);

    /** The text with the recording's names in place of those that were made up in their stead. */
    std::string as_recorded(std::string text) const;

    /** Whether two requests are the same but for such names; then these are known from now on. */
    bool matches(const std::string& recorded, const std::string& made);

  private:
    bool is_made_up(const std::string& recorded, const std::string& made) const;

    bool keyed_;
    std::vector<std::string> words_;
    std::map<std::string, std::string> recorded_of_; // by the name that was made up
};
