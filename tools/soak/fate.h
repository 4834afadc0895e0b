/**
 * What the contract leaves open while a command is carried out: where its broker was killed, what a
 * full disk still took. The model asks; who asks the model goes through all answers.
 */
#pragma once

#include <algorithm>
#include <vector>

enum class Open {
    Nothing,
    Killed,   // before any effect, or after the last
    FullDisk, // whatever needs room may be refused
};

class Fate {
  public:
    /** The broker is no more. */
    struct Killed {};

    explicit Fate(Open open) : open_(open) {}

    /** Asked before every effect. */
    void effect()
    {
        if (open_ == Open::Killed && effects_++ == lives_) {
            throw Killed();
        }
    }

    /** Asked where a full disk may refuse. */
    bool refuses()
    {
        if (open_ != Open::FullDisk) {
            return false;
        }
        if (asked_ == answers_.size()) {
            answers_.push_back(false);
        }
        return answers_[asked_++];
    }

    bool has_refused() const { return std::count(answers_.begin(), answers_.end(), true) > 0; }

    /** Runs `work` once for every course that it can take, until it says that one was the right
     * one. */
    template<class Work> bool any(const Work& work)
    {
        bool more = true;
        while (more) {
            effects_ = 0;
            asked_ = 0;
            if (work(*this)) {
                return true;
            }
            more = open_ == Open::Killed ? effects_ > lives_++ : next_answers();
        }
        return false;
    }

  private:
    /** Counts on, the last answer first; false after all of them. */
    bool next_answers()
    {
        while (!answers_.empty() && answers_.back()) {
            answers_.pop_back();
        }
        if (answers_.empty()) {
            return false;
        }
        answers_.back() = true;
        return true;
    }

    Open open_;
    int lives_ = 0; // effects that the broker brings about
    int effects_ = 0;
    std::vector<bool> answers_;
    std::size_t asked_ = 0;
};
