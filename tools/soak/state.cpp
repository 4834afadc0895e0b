#include "tools/soak/state.h"

#include <vector>

namespace {

using Facts = std::set<std::string>;

constexpr std::size_t LONGEST_SHOWN = 100;

template<class Value> std::string if_any(const std::optional<Value>& value)
{
    if constexpr (std::is_same_v<Value, std::string>) {
        return value ? shown(*value) : "none";
    } else {
        return value ? std::to_string(*value) : "none";
    }
}

std::string fact(const Account& account)
{
    std::string text = "account " + std::to_string(account.id) + ' ' + shown(account.name) +
                       " group " + account.group + (account.locked ? " locked" : "");
    for (const std::string& part :
         {account.email, account.smb_hash, account.sys_hash, account.p2p_user_name}) {
        text += ' ' + shown(part);
    }
    for (const std::string& group : account.member_of) {
        text += " member of " + group;
    }
    return text;
}

Facts facts(const State& state)
{
    Facts all = {"last id " + std::to_string(state.last_id),
                 "cloud owner " + shown(state.cloud_owner),
                 "owner file " + if_any(state.owner_file),
                 "upgraded " + std::to_string(state.upgraded),
                 "directory of sessions " + if_any(state.directory),
                 "log file " + std::to_string(state.log_file)};
    for (const auto& [id, account] : state.accounts) {
        all.insert(fact(account));
    }
    for (const std::string& name : state.remote_users) {
        all.insert("remote user " + shown(name));
    }
    for (const auto& [token, session] : state.sessions) {
        all.insert(
            "session " + shown(token) + " of " + shown(session.user) + " written " +
            std::to_string(session.written) + " mode " + std::to_string(session.mode) +
            (session.pinned ? " pinned" : "")
        );
    }
    for (const std::string& name : state.shared) {
        all.insert("shared memory " + shown(name));
    }
    return all;
}

std::string only_in(const Facts& some, const Facts& others, const char* mark)
{
    std::string lines;
    for (const std::string& fact : some) {
        lines += others.contains(fact) ? "" : std::string("\n  ") + mark + ' ' + fact;
    }
    return lines;
}

} // namespace

std::string shown(const std::string& text)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string line = "\"";
    for (const char c : text.substr(0, LONGEST_SHOWN)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && byte < 0x7F && c != '\\') {
            line += c;
        } else {
            line += std::string("\\x") + DIGITS[byte / 16] + DIGITS[byte % 16];
        }
    }
    return line + (text.size() > LONGEST_SHOWN ? "\"..." : "\"");
}

std::string difference(const State& expected, const State& found)
{
    const Facts wanted = facts(expected);
    const Facts there = facts(found);
    return only_in(wanted, there, "missing:") + only_in(there, wanted, "found:");
}
