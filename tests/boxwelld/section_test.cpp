// passwd and group with the daemon's sections in them: what a change writes, and what a kill leaves.
#include "devkit/boxwelld/seed.h"
#include "tests/boxwelld/daemon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <sstream>

using testing::HasSubstr;

namespace {

int writes_left = -1; // until the process is killed, in the middle of one; below 0: it is not

bool dies()
{
    return writes_left >= 0 && writes_left-- == 0;
}

} // namespace

extern "C" {
ssize_t __real_pwrite64(int file, const void* bytes, size_t size, off_t at);
int __real_ftruncate64(int file, off_t size);
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);
ssize_t __wrap_pwrite64(int file, const void* bytes, size_t size, off_t at);
int __wrap_ftruncate64(int file, off_t size);
int __wrap_rename(const char* from, const char* to);
int __wrap_unlink(const char* path);

ssize_t __wrap_pwrite64(int file, const void* bytes, size_t size, off_t at)
{
    if (dies()) {
        __real_pwrite64(file, bytes, size / 2, at);
        raise(SIGKILL);
    }
    return __real_pwrite64(file, bytes, size, at);
}

int __wrap_ftruncate64(int file, off_t size)
{
    return dies() ? raise(SIGKILL) : __real_ftruncate64(file, size);
}

int __wrap_rename(const char* from, const char* to)
{
    return dies() ? raise(SIGKILL) : __real_rename(from, to);
}

int __wrap_unlink(const char* path)
{
    return dies() ? raise(SIGKILL) : __real_unlink(path);
}
}

namespace {

constexpr char STATE[] = R"({"groups": [{"name": "g"}, {"name": "h"}], "accounts": [{"name": "ann", "group": "g"},
{"name": "bob", "group": "g", "member_of": ["h"]}, {"name": "cy", "group": "h"}]})";

AccountFields fields(std::optional<std::string> name, std::optional<std::string> group)
{
    AccountFields fields;
    fields.name = std::move(name);
    fields.group = std::move(group);
    return fields;
}

std::int64_t add(Store& store, const std::string& name, const std::string& group)
{
    return store.add_account(fields(name, group));
}

using Lines = std::set<std::string>;

void write(const std::string& path, const std::string& text)
{
    std::ofstream(path) << text;
}

/** A state and its files, both with lines of others on both sides of the section. */
class Sections : public testing::Test {
  protected:
    Sections()
    {
        const std::string folder = mkdtemp(folder_.data());
        paths_ = {folder + "/state", "", folder + "/passwd", folder + "/group"};
        write(paths_.passwd, "root:x:0:0::/root:/bin/sh\n");
        write(paths_.group, "root:x:0:\n");
        begin_anew();
        write(paths_.passwd, read_text(paths_.passwd) + "nobody:x:65534:65534::/:\neve:x:9:9::/:");
        write(paths_.group, read_text(paths_.group) + "eve:x:9:");
    }
    ~Sections() override { std::filesystem::remove_all(folder_); }

    void begin_anew() const
    {
        Store store(paths_);
        seed(store, STATE);
    }

    /** The lines of both files that count. */
    Lines lines() const
    {
        std::istringstream text(read_text(paths_.passwd) + '\n' + read_text(paths_.group));
        Lines found;
        for (std::string line; std::getline(text, line);)
            if (!line.empty() && line[0] != '#' && !found.insert(line).second)
                ADD_FAILURE() << line << " stands there twice";
        return found;
    }

    /** What they are by the state. */
    static Lines expected(Store& store)
    {
        Lines all = {"root:x:0:0::/root:/bin/sh", "nobody:x:65534:65534::/:", "eve:x:9:9::/:", "root:x:0:", "eve:x:9:"};
        std::map<std::string, std::string> members;
        for (const Account& account : store.accounts()) {
            all.insert(account.name + ":x:" + std::to_string(account.id) + (account.group == "g" ? ":2000" : ":2001") +
                       "::/home/" + account.name + ":/bin/false");
            for (const std::string& group : account.member_of)
                members[group] += (members[group].empty() ? "" : ",") + account.name;
        }
        for (const Group& group : store.groups())
            all.insert(group.name + ":x:" + std::to_string(group.id) + ':' + members[group.name]);
        return all;
    }

    std::string folder_ = "/tmp/section_test.XXXXXX";
    Paths paths_;
};

const struct {
    const char* name;
    bool in_place;
    std::function<void(Store&)> change;
} CHANGES[] = {
    {"add", true,
        [](Store& store) {
            add(store, "dee@example.com", "g");
        }},
    {"delete", true,
        [](Store& store) {
            store.delete_account(1003);
        }},
    {"delete a member", true,
        [](Store& store) {
            store.delete_account(1002);
        }},
    {"rename a member", true,
        [](Store& store) {
            store.set_account(1002, fields("b", {}));
        }},
    {"give another group", true,
        [](Store& store) {
            store.set_account(1001, fields({}, "h"));
        }},
    {"add a name that has gone", true,
        [](Store& store) {
            store.delete_account(1003), add(store, "cy", "h");
        }},
    {"add more than there is room for", false,
        [](Store& store) {
            for (int i = 0; i < 100; ++i)
                add(store, "m" + std::to_string(i), "g");
        }},
    {"add a membership", false,
        [](Store& store) {
            store.add_membership(1003, "g");
        }},
};

} // namespace

TEST_F(Sections, FollowInPlaceAsFarAsThereIsRoom)
{
    for (const auto& [name, in_place, change] : CHANGES) {
        SCOPED_TRACE(name);
        begin_anew();
        Store store(paths_);
        store.change([] {});
        const std::string passwd = read_text(paths_.passwd);
        const std::string group = read_text(paths_.group);
        store.change([&store, work = change] { work(store); });
        EXPECT_EQ(lines(), expected(store));
        const std::string followed = read_text(paths_.passwd) + read_text(paths_.group);
        Store(paths_).change([] {}); // writes the whole
        EXPECT_EQ(followed != read_text(paths_.passwd) + read_text(paths_.group), in_place);
        seed(store, STATE);
        EXPECT_EQ(read_text(paths_.passwd), passwd) << "without what had gone";
        EXPECT_EQ(read_text(paths_.group), group);
    }
}

TEST_F(Sections, AKillAtAnyWriteIsMendedByTheNextStart)
{
    int kills = 0;
    const Lines before = lines();
    for (const auto& [name, in_place, change] : CHANGES) {
        begin_anew();
        const auto killed_at = [&, work = change](int write) {
            const pid_t child = fork();
            if (child == 0) {
                Store store(paths_);
                store.change([] {});
                writes_left = write;
                store.change([&] { work(store); });
                _exit(0);
            }
            int status = -1;
            waitpid(child, &status, 0);
            return status == SIGKILL;
        };
        EXPECT_FALSE(killed_at(-1));
        const Lines after = lines();
        begin_anew();
        for (int write = 0; killed_at(write); ++write, ++kills) {
            SCOPED_TRACE(name + (", killed at write " + std::to_string(write)));
            const Lines left = in_place ? lines() : before;
            for (const std::string& line : left)
                EXPECT_TRUE(before.count(line) + after.count(line) != 0) << line << " is half a line";
            for (const std::string& line : before)
                EXPECT_TRUE(after.count(line) == 0 || left.count(line) != 0) << line << " is lost";
            Store store(paths_);
            store.change([] {});
            EXPECT_EQ(lines(), before) << "what was not answered is not done";
            EXPECT_EQ(lines(), expected(store));
        }
    }
    EXPECT_GT(kills, 20);
}

/** Some with the same length, and so soon that the file's times may be the same. */
TEST_F(Sections, WhatOthersWriteIsSeen)
{
    const std::function<void(std::string&)> edits[] = {
        [](std::string& text) { text.replace(text.find("bob:"), 4, "xob:"); },
        [](std::string& text) { text.erase(text.find("cy:"), text.find('\n', text.find("cy:")) - text.find("cy:")); },
        [](std::string& text) { text.replace(text.find("#   "), 2, "x:"); },
        [](std::string& text) {
            text.replace(text.find("; a line with # in front"),
                text.find('\n', text.find("; a line")) - text.find("; a line"), ", rewritten");
        },
    };
    for (std::size_t i = 0; i < std::size(edits); ++i) {
        SCOPED_TRACE(i);
        begin_anew();
        Store store(paths_);
        store.change([&] { add(store, "zed", "h"); });
        std::string text = read_text(paths_.passwd);
        edits[i](text);
        write(paths_.passwd, text);
        store.change([&] { store.delete_account(1002); });
        store.change([&] { add(store, "fay", "h"); });
        EXPECT_EQ(lines(), expected(store));
    }
}

/** Two processes with one state, as the daemon and what seeds it. */
TEST_F(Sections, TwoStoresFollowEachOther)
{
    Store one(paths_);
    Store other(paths_);
    for (int i = 0; i < 60; ++i) {
        Store& store = i % 3 == 0 ? one : other;
        store.change([&] { add(store, "n" + std::to_string(i), "g"); });
        store.change([&] { store.delete_account(1003 + i); });
        EXPECT_EQ(lines(), expected(one));
    }
}

TEST_F(Sections, DoNotGrowAsAccountsComeAndGo)
{
    Store store(paths_);
    store.change([] {});
    const std::size_t size = read_text(paths_.passwd).size();
    int in_place = 0;
    for (int i = 0; i < 200; ++i) {
        const std::string name = "n" + std::to_string(i);
        std::int64_t id = 0;
        store.change([&] { id = add(store, name, "g"); });
        store.change([&] { store.delete_account(id); });
        in_place += read_text(paths_.passwd).find("\n#" + name.substr(1) + ":x:") != std::string::npos ? 1 : 0;
    }
    EXPECT_GT(in_place, 180);
    EXPECT_EQ(lines(), expected(store));
    EXPECT_LE(read_text(paths_.passwd).size(), size + 128);
}

/** What the daemon reads and writes, in calls and bytes, for one account more and one less. */
TEST(Growth, AChangeCostsNoMoreAmongManyAccounts)
{
    const auto cost = [](int accounts) {
        const Daemon daemon;
        Json state = {{"groups", {{{"name", "sky-hold"}}}}, {"accounts", Json::array()}};
        for (int i = 0; i < accounts; ++i)
            state["accounts"].push_back({{"name", "user" + std::to_string(i)}, {"group", "sky-hold"}});
        daemon.write("many", state.dump());
        EXPECT_EQ(Daemon::run("seed " + daemon.path("many")).status, 0);
        call(add_user("first")); // the seed was another process's
        const std::map<std::string, long> before = daemon.input_and_output();
        EXPECT_THAT(call(add_user("zoe")).reply, HasSubstr("success"));
        EXPECT_THAT(call(delete_user("1002")).reply, HasSubstr("success"));
        std::map<std::string, long> spent = daemon.input_and_output();
        for (auto& [name, count] : spent)
            count -= before.at(name);
        return spent;
    };
    const auto few = cost(20);
    const auto many = cost(5000);
    constexpr long PAGES = 40; // of the database's trees, which are deeper
    EXPECT_LE(many.at("rchar:"), few.at("rchar:") + PAGES * 4096);
    EXPECT_LE(many.at("wchar:"), few.at("wchar:") + PAGES * 4096);
    EXPECT_LE(many.at("syscr:"), few.at("syscr:") + PAGES);
    EXPECT_LE(many.at("syscw:"), few.at("syscw:") + 4 * PAGES);
}
