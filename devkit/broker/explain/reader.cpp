#include "devkit/broker/explain/reader.h"

#include <glib.h>

#include <algorithm>

namespace {

/** A command that has had no statement while so many of others came has ended without one. */
constexpr std::size_t LONGEST_PAUSE = 64;

bool is_utf8(const std::string& text)
{
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

} // namespace

void Reader::read(const std::string& line)
{
    for (const Entry& entry : entries_of(line)) {
        switch (entry.kind) {
        case Entry::Kind::Said:
            take(entry);
            break;
        case Entry::Kind::Foreign:
            if (is_garbage_ && (entry.text.empty() || !is_utf8(entry.text))) {
                ++no_text_;
            } else {
                pass_on(entry.text);
            }
            break;
        case Entry::Kind::Secret:
            pass_on("(A cut statement is left out, since it holds hashes.)");
            break;
        case Entry::Kind::NoText:
            ++no_text_;
            is_garbage_ = true;
            break;
        case Entry::Kind::Transaction:
            break;
        }
    }
}

void Reader::take(const Entry& entry)
{
    take_no_text();
    ++statements_;
    is_garbage_ = false;
    quiet_ = false;
    if (!entry.process.empty() && tells_who_asks(*entry.said.row)) {
        finish_if([&](const Open& open) { return open.story->process() == entry.process; });
    }
    if (Open* open = story_for(entry)) {
        open->story->add(entry);
        open->touched = statements_;
        std::rotate(
            open_.begin() + (open - open_.data()), open_.begin() + (open - open_.data()) + 1,
            open_.end()
        );
    } else {
        open_.push_back({std::make_shared<Story>(entry), statements_});
        items_.push_back({open_.back().story, "", false});
    }
    finish_if([this](const Open& each) {
        return each.story->ended() || each.touched + LONGEST_PAUSE < statements_;
    });
}

/**
 * The command whose next statement it can be. Where the log names no process, several may be: then
 * one whose name it tells, of the same second, or else the one that has waited longest, as where
 * processes take turns, but of those that may have ended the last; that this is a guess is kept.
 */
Reader::Open* Reader::story_for(const Entry& entry)
{
    Open* best = nullptr;
    Likeness best_likeness = {};
    bool is_guess = false;
    for (Open& open : open_) {
        if (!open.story->takes(entry)) {
            continue;
        }
        const Likeness likeness = open.story->likeness(entry);
        const bool is_alike = best != nullptr && likeness.by_account == best_likeness.by_account &&
                              likeness.by_second == best_likeness.by_second;
        const bool is_nearer = likeness == best_likeness && open.story->is_updated();
        if (best == nullptr || likeness > best_likeness || is_nearer) {
            is_guess = is_alike;
            best = &open;
            best_likeness = likeness;
        } else {
            is_guess = is_guess || is_alike;
        }
    }
    if (is_guess) {
        best->story->set_guessed();
    }
    return best;
}

/** Those for which the condition holds have no further statement; whether more of others may come
 * is the reader's to know, so what came last may only be cut. */
template<typename Condition> void Reader::finish_if(Condition condition)
{
    for (Item& item : items_) {
        const auto open = std::find_if(open_.begin(), open_.end(), [&item](const Open& each) {
            return each.story == item.story;
        });
        if (open != open_.end() && condition(*open)) {
            if (open->touched < statements_ || quiet_) {
                open->story->settle();
            }
            item.finished = true;
            open_.erase(open);
        }
    }
}

void Reader::pass_on(std::string line)
{
    take_no_text();
    items_.push_back({nullptr, std::move(line)});
}

/** Says once how many lines were no text. */
void Reader::take_no_text()
{
    if (no_text_ > 0) {
        items_.push_back(
            {nullptr, no_text_ == 1 ? "(A line is left out: it is no text.)"
                                    : "(" + std::to_string(no_text_) +
                                          " lines are left out: they are no text.)"}
        );
    }
    no_text_ = 0;
}

void Reader::rest()
{
    quiet_ = true;
    finish_if([](const Open& open) { return open.story->at_rest(); });
}

void Reader::end()
{
    if (statements_ > 0) {
        take_no_text();
    }
    finish_if([](const Open&) { return true; });
}

std::optional<Item> Reader::next()
{
    if (items_.empty() || !items_.front().finished) {
        return {};
    }
    Item item = std::move(items_.front());
    items_.pop_front();
    return item;
}
