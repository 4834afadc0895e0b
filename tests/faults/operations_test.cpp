// Every operation, in each of its variants, with every fault in turn.
#include "syscmd/handler.h"
#include "tests/faults/sweep.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>

namespace {

constexpr const char* HASHES = "NEUzOiQxJGEkYg=="; // 4E3:$1$a$b
constexpr const char* ALICE = "alice:secret";
constexpr const char* BOB = "bob:secret";
constexpr const char* CAROL = "carol:secret";
const std::vector<Session> RECORDS = {
    {"day", "bob"}, {"kept", "bob", false, true}, {"old", "dave", true}, {"pinned", "bob", true, true}};

const Variant VARIANTS[] = {
    {"add", {"adduser", "new@example.com", HASHES, "new@example.com"}, ALICE, CODE_SUCCEED, "success"},
    {"add_replacing", {"adduser", "zoe", HASHES, "zoe@example.com"}, ALICE, CODE_SUCCEED, "success"},
    {"add_taken", {"adduser", "dave", HASHES, "dave@example.com"}, ALICE, CODE_FAILED, "AddUser failed"},
    {"add_unreadable", {"adduser", "zoe"}, ALICE, CODE_FAILED,
        "Add User: error reading username/password/email params from request"},
    {"add_by_member", {"adduser", "zoe", HASHES, "z@x"}, BOB, CODE_FAILED, "operation unknown"},
    {"add_by_locked", {"adduser", "zoe", HASHES, "z@x"}, CAROL, CODE_FAILED, "access denied"},
    {"remote", {"addremoteuser", "new"}, ALICE, CODE_SUCCEED, "success"},
    {"remote_present", {"addremoteuser", "zoe"}, ALICE, CODE_SUCCEED, "success"},
    {"remote_refused", {"addremoteuser", ""}, ALICE, CODE_FAILED, "system command failed"},
    {"remote_by_member", {"addremoteuser", "new"}, "erin", CODE_FAILED, "operation unknown"},
    {"delete", {"deleteuser", "bob", "bob"}, ALICE, CODE_SUCCEED, "success"},
    {"delete_by_member", {"deleteuser", "zoe", "zoe"}, "erin:", CODE_SUCCEED, "success"},
    {"delete_mail", {"deleteuser", "bob@example.net", "bob"}, ALICE, CODE_SUCCEED, "success"},
    {"delete_absent", {"deleteuser", "absent", "gone@example.com"}, ALICE, CODE_FAILED, "DeleteUser failed"},
    {"delete_refused", {"deleteuser", "bob", "bob"}, ALICE, CODE_FAILED, "DeleteUser failed", "keep_home_folder"},
    {"delete_unasked", {"deleteuser", "bob", "bob"}, ALICE, CODE_FAILED, "DeleteUser failed", "[bob]"},
    {"delete_second", {"deleteuser", "second", "second"}, ALICE, CODE_SUCCEED, "success"},
    {"delete_stranger", {"deleteuser", "stranger", "s"}, ALICE, CODE_SUCCEED, "success"},
    {"delete_by_locked", {"deleteuser", "zoe", "zoe"}, CAROL, CODE_FAILED, "access denied"},
    {"delete_by_local", {"deleteuser", "zoe", "zoe"}, "dave:x", CODE_FAILED, "access denied"},
    {"delete_by_unknown", {"deleteuser", "zoe", "zoe"}, "mallory:x", CODE_FAILED, "access denied"},
    {"delete_by_nobody", {"deleteuser", "zoe", "zoe"}, nullptr, CODE_FAILED, "access denied"},
    {"delete_ownerless", {"deleteuser", "zoe", "zoe"}, nullptr, CODE_SUCCEED, "success", nullptr, {},
        OwnerFile::Ownerless},
    {"update_conflicts", {"updateuser", "bob", HASHES, "bob@example.net", "bob-p2p"}, ALICE, CODE_SUCCEED, "success"},
    {"update_same_name", {"updateuser", "bob", HASHES, "bob", "p2p"}, BOB, CODE_SUCCEED, "success"},
    {"update_refused", {"updateuser", "bob", HASHES, "new", "new"}, ALICE, CODE_FAILED, "UpdateUser failed", "<xs:set"},
    {"update_conflict_refused", {"updateuser", "bob", HASHES, "bob", "bob-p2p"}, ALICE, CODE_FAILED,
        "UpdateUser failed", "<User_Name>bob-p2p"},
    {"update_owner", {"updateuser", "alice", HASHES, "alice@example.net", "alice-p2p"}, "alice-p2p", CODE_SUCCEED,
        "success"},
    {"update_absent", {"updateuser", "absent", HASHES, "no@x", ""}, ALICE, CODE_FAILED,
        "UpdateUser failed: unable to get local user id"},
    {"update_by_locked", {"updateuser", "bob", HASHES, "c@x", "c"}, CAROL, CODE_FAILED, "access denied"},
    {"upgrade", {"upgradeusertosso", "bob", "bob@example.org", ""}, BOB, CODE_SUCCEED, "success"},
    {"upgrade_owner", {"upgradeusertosso", "alice", "alice@example.org", HASHES}, ALICE, CODE_SUCCEED, "success"},
    {"upgrade_absent", {"upgradeusertosso", "absent", "no@x", ""}, ALICE, CODE_FAILED,
        "UpgradeUserToSSO: failed retrieve local user by username:absent"},
    {"upgrade_by_locked", {"upgradeusertosso", "alice", "c@x", HASHES}, CAROL, CODE_FAILED, "access denied"},
    {"unregister", {"unregister"}, nullptr, CODE_NOREPLY, "system command failed"},
    {"unregister_refused", {"unregister"}, nullptr, CODE_FAILED, "unregister operation failed", "CloudOwner"},
    {"session_first", {"initlocalsession", "bob", "token", "1"}, ALICE, CODE_SUCCEED, "success"},
    {"session", {"initlocalsession", "bob", "token", "1"}, BOB, CODE_SUCCEED, "success", nullptr, RECORDS},
    {"session_pinned", {"initlocalsession", "bob", "token", "0"}, BOB, CODE_SUCCEED, "success", nullptr, RECORDS},
    {"session_by_locked", {"initlocalsession", "bob", "token", "0"}, CAROL, CODE_FAILED, "access denied", nullptr,
        RECORDS},
    {"unknown", {"AddUser"}, ALICE, CODE_FAILED, "operation unknown"},
    {"nameless", {}, ALICE, CODE_FAILED, "getRequestParam() failed"},
};

class Operations : public testing::TestWithParam<Variant> {};

TEST_P(Operations, EveryFaultInTurn)
{
    EXPECT_EQ(sweep(GetParam(), execute), "");
}

INSTANTIATE_TEST_SUITE_P(Faults, Operations, testing::ValuesIn(VARIANTS),
    [](const auto& variant) { return std::string(variant.param.name); });

// ---- the loop notices what is planted -----------------------------------------------------------

TEST(Loop, NoticesWhatIsPlanted)
{
    const struct {
        const char* variant;
        void (*execute)(ITransaction*);
        const char* finding;
    } plants[] = {
        {"unknown",
            [](ITransaction* transaction) {
                execute(transaction);
                static std::array<void*, 64> lost;
                static std::size_t count = 0;
                lost.at(count++ % lost.size()) = faultStruck() ? malloc(1) : nullptr;
            },
            "resources were left behind"},
        {"add_by_locked",
            [](ITransaction* transaction) {
                execute(transaction);
                std::string response;
                if (faultStruck()) {
                    AddRemoteUserHandler(transaction, response);
                }
            },
            "admitted"},
        {"unknown",
            [](ITransaction* transaction) {
                execute(transaction);
                if (faultStruck()) {
                    abort();
                }
            },
            "allocation 1, error 12: ended the process, status 6"},
        {"unknown",
            [](ITransaction* transaction) {
                execute(transaction);
                if (faultStruck()) {
                    alarm(1);
                    pause();
                }
            },
            "ended the process, status 14"},
        {"unknown",
            [](ITransaction* transaction) {
                execute(transaction);
                if (faultStruck()) {
                    throw 1;
                }
            },
            "an exception left execute"},
    };
    for (const auto& [name, execute, finding] : plants) {
        const Variant* variant = std::find_if(std::begin(VARIANTS), std::end(VARIANTS),
            [&](const Variant& one) { return one.name == std::string(name); });
        EXPECT_NE(sweep(*variant, execute).find(finding), std::string::npos) << finding;
    }
}

} // namespace

/** What has run: printed at the end, when every test did. */
struct Figures : testing::Environment {
    void TearDown() override
    {
        for (std::size_t i = 0; i < KINDS.size(); ++i) {
            std::printf("%8ld trials of %s\n", trialsOf(i), KINDS[i].name);
        }
        const testing::UnitTest& all = *testing::UnitTest::GetInstance();
        if (all.test_to_run_count() != all.total_test_count()) {
            return;
        }
        for (std::size_t i = 0; i < STATEMENTS.size(); ++i) {
            EXPECT_TRUE(wasSaid(i)) << "never said: " << STATEMENTS[i];
        }
        const bool can_pin = std::string("root") == getenv("DEVICE_WAY");
        for (std::size_t i = 0; i < FORCED.size(); ++i) {
            const bool needs_pin = std::string(FORCED[i].difference).find("pinned") != std::string::npos;
            EXPECT_TRUE(occurred(i) || (needs_pin && !can_pin)) << "never occurred: " << FORCED[i].name;
        }
    }
};
static testing::Environment* const figures = testing::AddGlobalTestEnvironment(new Figures);
