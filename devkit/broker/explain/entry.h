/** What one line of a log holds: the log file's form, journalctl's short forms, its `cat` and
 * `json`.
 */
#pragma once

#include "devkit/broker/explain/statement.h"

#include <string>
#include <vector>

struct Entry {
    enum class Kind {
        Said,        // a statement
        Foreign,     // a line, or the part of one, that is another's
        Transaction, // the rest of a request or reply, which a statement began
        Secret,      // a cut piece of a statement, with a hash in it
        NoText,      // holds what no text does
    } kind = Kind::Foreign;
    std::string text;    // of what is foreign: as it stood
    std::string time;    // as the log has it; empty: not told
    std::string process; // its number; empty: not told
    Said said;
};

/** The entries of a line, in order; in the log file a statement without a line end is followed by
 * the next one. */
std::vector<Entry> entries_of(const std::string& line);
