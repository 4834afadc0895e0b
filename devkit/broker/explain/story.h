/** A command as its statements tell it. */
#pragma once

#include "devkit/broker/explain/entry.h"
#include "devkit/broker/explain/places.h"

#include <compare>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct Event {
    Said said;
    std::string time;
};

/** How a statement is like a command's; what stands first counts most. */
struct Likeness {
    bool by_account; // it tells of the same account
    bool by_second;  // it was made in the same second
    bool by_login;   // it tells of the requester

    auto operator<=>(const Likeness&) const = default;
};

class Story {
  public:
    /** A command that begins, as far as the log has it, with this statement. */
    explicit Story(const Entry& first);

    /** Whether a statement may be the next of this command. */
    bool takes(const Entry& entry) const;
    void add(const Entry& entry);
    Likeness likeness(const Entry& entry) const;
    /** A statement was added that another command may have made. */
    void set_guessed() { guessed_ = true; }
    bool guessed() const { return guessed_; }

    /** No statement comes any more: it is none of the operations that always have a last one. */
    void settle();
    bool settled() const { return settled_; }

    bool ended() const { return end_ != End::Open; }
    /** Whether the daemon did the update that it asked for, the last but for the owner file. */
    bool is_updated() const { return last_reply_ == "success" && !new_name_.empty(); }
    /** Whether it may have ended: some commands have no last statement. */
    bool at_rest() const;
    End end() const { return end_; }

    /** The operations that it can be, mostly one. */
    std::vector<std::string_view> operations() const;
    bool may_be(std::string_view operation) const { return phases_.count(operation) != 0; }
    /** Whether it is that operation and no other. */
    bool is(std::string_view operation) const { return may_be(operation) && phases_.size() == 1; }

    const std::string& time() const { return events_.front().time; }
    const std::string& process() const { return process_; }
    const std::vector<Event>& events() const { return events_; }
    /** Whether who asks is told; login and flags are empty otherwise. */
    bool tells_requester() const { return !is_owner_.empty(); }
    const std::string& login() const { return login_; }
    bool is_owner() const { return is_owner_ == "1"; }
    bool is_member() const { return is_member_ == "1"; }
    /** The operation that a refusal names, when it is none of OPERATIONS. */
    const std::string& asked_for() const { return asked_for_; }
    const std::string& account() const { return account_; }
    /** Of an update: the name that the account is to have, and its group. */
    const std::string& new_name() const { return new_name_; }
    const std::string& group() const { return group_; }
    const std::string& p2p_name() const { return p2p_name_; }
    /** What the daemon answered last: "success", another status, or empty when it is not told. */
    const std::string& last_reply() const { return last_reply_; }
    /** The daemon's reason for a refusal; `known` tells an empty one from none. */
    const std::string& reason() const { return reason_; }
    bool reason_known() const { return reason_known_; }

  private:
    std::map<std::string_view, int> phases_after(const Said& said) const;
    bool names_another(const Said& said) const;
    bool knows(std::string_view name) const;
    void learn(const Said& said);
    void learn_names(const Said& said);

    std::map<std::string_view, int> phases_; // by operation that it can still be
    std::vector<Event> events_;
    std::string process_;
    End end_ = End::Open;
    std::string login_, is_owner_, is_member_;
    std::string asked_for_, account_, new_name_, group_, p2p_name_, last_reply_, reason_;
    bool reason_known_ = false;
    bool settled_ = false;
    bool guessed_ = false;
};

using StoryPointer = std::shared_ptr<Story>;
