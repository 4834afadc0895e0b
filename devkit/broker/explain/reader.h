/** Tells the commands of a log apart, line by line. */
#pragma once

#include "devkit/broker/explain/story.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

/** A command, or a line that is another's, in the order of the log. */
struct Item {
    StoryPointer story; // null: a line
    std::string line;
    bool finished = true;
};

class Reader {
  public:
    void read(const std::string& line);

    /** No line has come for a while: what may have ended has. */
    void rest();
    /** No line comes any more, or none for so long that nothing is awaited: all has ended. */
    void end();

    /** The next item behind which nothing can change what stands in front of it. */
    std::optional<Item> next();

    /** Statements that were read. */
    std::size_t statements() const { return statements_; }

  private:
    struct Open {
        StoryPointer story;
        std::size_t touched; // by which statement
    };

    void take(const Entry& entry);
    Open* story_for(const Entry& entry);
    template<typename Condition> void finish_if(Condition condition);
    void pass_on(std::string line);
    void take_no_text();

    std::deque<Item> items_;
    std::vector<Open> open_; // in the order of their last statements
    std::size_t statements_ = 0;
    bool quiet_ = false;      // no statement has come for a while
    bool is_garbage_ = false; // what is no text has come since the last statement
    std::size_t no_text_ = 0; // lines since the last one that is text
};
