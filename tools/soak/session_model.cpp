#include "tools/soak/session_model.h"

namespace {

constexpr time_t DAY = 86400;
constexpr std::size_t LONGEST_TOKEN = 255 - sizeof "/opt/skyhold/etc/local_sessions";
constexpr unsigned FIRST_MODE = 0644; // before it is changed, by the usual mask
constexpr unsigned RECORD_MODE = 0004;
constexpr unsigned DIRECTORY_MODE = 0005;

/** Whether a record of that name can be opened for writing. */
bool is_openable(const State& state, const std::string& token)
{
    const auto there = state.sessions.find(token);
    return !token.empty() && token != "." && token != ".." && token.size() <= LONGEST_TOKEN &&
           token.find('/') == std::string::npos &&
           (there == state.sessions.end() || !there->second.pinned);
}

} // namespace

void sweep_sessions(
    State& state, const World& world, Fate& fate, const std::optional<std::string>& unpinned_owner
)
{
    for (auto at = state.sessions.begin(); at != state.sessions.end();) {
        auto& [token, session] = *at;
        const std::string line = session.user.substr(0, session.user.find_first_of("\r\n"));
        if (session.pinned && !session.user.empty() && line == unpinned_owner) {
            fate.effect();
            session.pinned = false;
        }
        if (world.now - session.written <= DAY || session.pinned) {
            ++at;
            continue;
        }
        const std::string object = token;
        fate.effect();
        at = state.sessions.erase(at);
        fate.effect();
        state.shared.erase(object);
    }
}

void record_session(
    State& state,
    const World& world,
    Fate& fate,
    const std::string& token,
    const std::string& user,
    bool pinned
)
{
    if (!state.directory) {
        fate.effect();
        state.directory = DIRECTORY_MODE;
    }
    if (!is_openable(state, token)) {
        return;
    }
    const auto former = state.sessions.find(token);
    const unsigned mode = former == state.sessions.end() ? FIRST_MODE : former->second.mode;
    fate.effect();
    Session& session = state.sessions[token];
    session = {.user = "", .written = world.now, .pinned = false, .mode = mode};
    if (pinned && world.can_pin) {
        fate.effect();
        session.pinned = true;
    }
    if (!user.empty() && !fate.refuses()) {
        fate.effect();
        session.user = user;
    }
    if (!session.pinned) {
        fate.effect();
        session.mode = RECORD_MODE;
    }
}
