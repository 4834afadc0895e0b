/** passwd or group, and the daemon's section in it. */
#pragma once

#include "devkit/boxwelld/files.h"

#include <sys/stat.h>

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

/**
 * The section is the lines between two comment lines, one at most; every other line is somebody
 * else's and stays as it is.
 *
 * It is written whole with room behind its lines, comments of blanks. From then on a change costs
 * its line: one that comes is laid into the room behind a '#', which its first byte then replaces;
 * of one that goes the first byte becomes a '#'. Whoever reads meanwhile, and whoever starts after
 * a kill, finds each line whole or as a comment, and the file is as long as it was. What others do
 * to the file is seen by its times, size and place.
 */
class SectionFile {
  public:
    /**
     * @param path        the file
     * @param unfinished  keeps the text of a file that is being written whole, and completes it
     *                    where the process was killed meanwhile
     */
    SectionFile(std::string path, std::string unfinished);

    /** Whether the file is as it was read or left. */
    bool is_known() const;
    /** Reads the file. A section whose end is missing is a Refusal. */
    void read();
    /** Whether a line that is not the daemon's begins with `name` and a colon, as far as read. */
    bool is_taken(const std::string& name) const { return others_.count(name) != 0; }
    /**
     * Has the line with this id in its third field be `line`, which ends with its '\n' (empty:
     * none). False, with nothing changed, where the section must be replaced: there is no room, or
     * a place is not as it was left.
     */
    bool set(std::int64_t id, const std::string& line);
    /** Has the section hold these lines, the room anew; writes nothing where that is no change. */
    void replace(const std::vector<std::string>& lines);

  private:
    struct Line {
        std::size_t begin;
        std::size_t size; // its '\n' included
    };

    bool append(const Fd& file, const std::string& line);
    void learn(const std::string& text);
    void write(const std::string& before, const std::string& text) const;

    std::string path_;
    std::string unfinished_;
    struct stat left_ = {};
    std::set<std::string> others_; // names of the lines that are not the daemon's
    std::unordered_map<std::int64_t, Line> lines_;
    std::string last_;     // what stands in front of the room
    std::size_t room_ = 0; // where it begins
    std::size_t end_ = 0;  // and ends: the section's last line
};
