#include "devkit/broker/state/show.h"
#include "devkit/broker/table.h"

#include <gtest/gtest.h>

namespace {

TEST(Table, Printable)
{
    const struct {
        const char* text;
        const char* expected;
    } CASES[] = {
        {"zoë", "zoë"}, {"a\nb\033[2J\x7f", "a\\x0ab\\x1b[2J\\x7f"}, {"back\\slash", "back\\x5cslash"},
        {"cut \xc3", "cut \\xc3"}, {"turned \xe2\x80\xae", "turned \\xe2\\x80\\xae"}, // right-to-left override
    };
    for (const auto& c : CASES)
        EXPECT_EQ(printable(c.text), c.expected);
    EXPECT_EQ(printable(std::string("a\0b", 3)), "a\\x00b");
}

TEST(Table, FitsTheTerminal)
{
    const std::vector<TableRow> ROWS = {
        {{"ID", "NAME", ""}, Style::Heading}, {{"1", "alice@example.com", "the owner"}}, {{"22", "日本"}}};
    const struct {
        std::size_t width;
        const char* expected;
    } CASES[] = {
        {0, "  ID  NAME\n  1   alice@example.com  the owner\n  22  日本\n"},
        {34, "  ID  NAME\n  1   alice@example.com  the owner\n  22  日本\n"},
        {30, "  ID  NAME\n  1   alice@example  the owner\n      .com\n  22  日本\n"},
        {24, "  ID  NAME\n  1   alice@ex  the\n      ample.co  owner\n      m\n  22  日本\n"},
        {5, "  ID  NAME\n  1   alice@ex  the\n      ample.co  owner\n      m\n  22  日本\n"},
    };
    for (const auto& c : CASES)
        EXPECT_EQ(table(ROWS, c.width, false), c.expected) << c.width;
    EXPECT_EQ(table({{{"a"}, Style::Warning}}, 0, true), "\033[31m  a\033[0m\n");
    EXPECT_EQ(table({}, 10, true), "");
}

DaemonAccount daemon(std::int64_t id, const char* name, const char* group, bool locked = false)
{
    return {
        .id = id, .name = name, .group = group, .locked = locked, .email = "", .p2p_user_name = "", .member_of = {}};
}

DeviceState usual()
{
    DeviceState state;
    state.daemon_answers = true;
    state.cloud_owner = "alice";
    state.owner_file = {"alice", "alice-p2p"};
    state.daemon_accounts = {daemon(1001, "alice", "admin"), daemon(1002, "bob", "sky-hold")};
    state.system_accounts = {{1001, "alice", "admin", {}}, {1002, "bob", "sky-hold", {}}};
    state.information = {{"Model", "BX"}};
    return state;
}

TEST(State, Roles)
{
    const struct {
        DaemonAccount in_daemon;
        SystemAccount in_system;
        Role expected;
    } CASES[] = {
        {daemon(1, "ALICE", "share"), {1, "ALICE", "share", {}}, Role::Owner},
        {daemon(1, "Alice-p2p", "share"), {1, "Alice-p2p", "share", {}}, Role::Owner},
        {daemon(1, "zoe", "sky-hold"), {1, "zoe", "sky-hold", {}}, Role::Member},
        {daemon(1, "zoe", "share"), {1, "zoe", "share", {"a", "sky-hold"}}, Role::Member},
        {daemon(1, "zoe", "sky-hold", true), {1, "zoe", "sky-hold", {}}, Role::LockedMember},
        {daemon(1, "zoe", "sky-hold"), {1, "zoe", "share", {}}, Role::Stranger},
        {daemon(1, "zoe", "share", true), {1, "zoe", "share", {}}, Role::Stranger},
        {daemon(1, "other", "sky-hold"), {1, "zoe", "sky-hold", {}}, Role::Stranger},
    };
    for (const auto& c : CASES) {
        DeviceState state = usual();
        state.daemon_accounts = {c.in_daemon};
        state.system_accounts = {c.in_system};
        EXPECT_EQ(overview_of(state).accounts.back().role, c.expected) << c.in_daemon.name;
    }
}

TEST(State, WhatDoesNotAgree)
{
    using Change = void (*)(DeviceState&);
    const struct {
        Change change;
        std::vector<std::string> expected; // differences, then remarks
    } CASES[] = {
        {[](DeviceState&) {}, {}},
        {[](DeviceState& s) { s.cloud_owner = "Alice"; }, {}},
        {[](DeviceState& s) { s.system_accounts.pop_back(); }, {"bob is not in the system"}},
        {[](DeviceState& s) { s.daemon_accounts.pop_back(); }, {"bob is not in the daemon"}},
        {[](DeviceState& s) {
             s.system_accounts[1] = {7, "bob", "share", {"x"}};
         },
            {"bob has the id 7 in the system", "bob is of the group share in the system",
                "bob has other further groups in the system"}},
        {[](DeviceState& s) { s.owner_file.reset(); }, {"There is no owner file: the device has no owner."}},
        {[](DeviceState& s) {
             s.owner_file = {"", "alice-p2p"};
         },
            {"The owner file names no owner: who comes with an empty login is one."}},
        {[](DeviceState& s) { s.cloud_owner = s.owner_file->owner = "zoe"; },
            {"The owner file's owner, zoe, has no account."}},
        {[](DeviceState& s) { s.cloud_owner = ""; },
            {"The owner file names alice, the daemon nobody as the owner in the cloud."}},
        {[](DeviceState& s) { s.daemon_answers = false; },
            {"The daemon does not answer: every command that needs it fails."}},
        {[](DeviceState& s) {
             s.information = {{"Serial", ""}, {"Model", "ERROR: busy"}};
         },
            {"boxwellinfo Serial has no answer: an owner file written now is deleted.",
                "boxwellinfo Model has no answer: an owner file written now is deleted."}},
    };
    for (const auto& c : CASES) {
        DeviceState state = usual();
        c.change(state);
        const Overview overview = overview_of(state);
        std::vector<std::string> found;
        for (const AccountView& account : overview.accounts)
            for (const std::string& difference : account.differences)
                found.push_back(account.name + ' ' + difference);
        found.insert(found.end(), overview.remarks.begin(), overview.remarks.end());
        EXPECT_EQ(found, c.expected);
        EXPECT_EQ(all_agrees(overview), c.expected.empty());
    }
}

TEST(State, Sessions)
{
    DeviceState state = usual();
    state.sessions = {{"a", "bob", 59, true, false}, {"b", "bob", 60, false, false}, {"c", "bob", 3660, false, true},
        {"d", "bob", 86'400, false, false}, {"e", "bob", 86'401, true, true}, {"f\n", "bob", 90'000, false, false}};
    const std::string text = for_people(state, overview_of(state), 0, false);
    EXPECT_EQ(text.substr(text.find("sessions\n")), R"(sessions
  TOKEN  USER  AGE        STATE
  a      bob   59 s       pinned
  b      bob   1 min
  c      bob   1 h 1 min  shared memory
  d      bob   1 d
  e      bob   1 d        pinned, expired, shared memory
  f\x0a  bob   1 d 1 h    expired
)");
}

TEST(State, Json)
{
    DeviceState state = usual();
    state.daemon_accounts.pop_back();
    state.remote_users = {"zoe-p2p"};
    state.sessions = {{"t", "bob", 86'401, true, false}};
    EXPECT_EQ(as_json(state, overview_of(state)).dump(),
        R"({"owner_file":{"owner":"alice","p2p_owner":"alice-p2p"},)"
        R"("cloud_owner":"alice","upgraded":false,"daemon_answers":true,"accounts":[)"
        R"({"name":"alice","role":"owner","daemon":{"id":1001,"group":"admin","locked":false,"email":"","p2p_user_name":"","member_of":[]},)"
        R"("system":{"id":1001,"group":"admin","member_of":[]},"differences":[]},)"
        R"({"name":"bob","role":"stranger","daemon":null,"system":{"id":1002,"group":"sky-hold","member_of":[]},)"
        R"("differences":["is not in the daemon"]}],"remote_users":["zoe-p2p"],)"
        R"("sessions":[{"token":"t","user":"bob","age":86401,"expired":true,"pinned":true,"shared_memory":false}],)"
        R"("information":{"Model":"BX"},"remarks":[]})");
    state.owner_file.reset();
    state.cloud_owner.clear();
    const auto json = as_json(state, overview_of(state));
    EXPECT_TRUE(json["owner_file"].is_null() && json["cloud_owner"].is_null());
}

} // namespace
