// Every operation, in each of its variants, with every fault in turn.
#include "common/log.h"
#include "liblst/owned.h"
#include "syscmd/daemon/conflicts.h"
#include "syscmd/daemon/query_user.h"
#include "syscmd/handler.h"
#include "tests/faults/sweep.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace {

class Operations : public testing::TestWithParam<Variant> {};

TEST_P(Operations, EveryFaultInTurn)
{
    EXPECT_EQ(sweep(GetParam(), execute), "");
}

INSTANTIATE_TEST_SUITE_P(Faults, Operations, testing::ValuesIn(variants()),
    [](const auto& variant) { return std::string(variant.param.name); });

// ---- what the operations do not tell apart ---------------------------------------------------------

/** What the call returns while each allocation in turn fails, and when none does. */
std::string underEachAllocation(const std::function<int()>& call)
{
    std::string results;
    int result = 0;
    for (Fault fault = {"allocation", ENOMEM}; fault.nth == 1 || faultStruck(); ++fault.nth) {
        prepareDevice({});
        withFault(fault, [&] { result = call(); });
        results += std::to_string(result) + ' ';
    }
    return results;
}

int query(const char* username)
{
    AUTO_FREE char* id = nullptr;
    AUTO_FREE char* group = nullptr;
    AUTO_FREE char* email = nullptr;
    return GetUserData(&id, &group, &email, username);
}

TEST(ExhaustedMemory, IsNotTakenForSomethingElse)
{
    const auto calls = [] {
        shell_is_replayed = true;
        const std::string results[] = {
            underEachAllocation([] { return query("zoe"); }),
            underEachAllocation([] { return query("dave"); }), // of whom the reply has two records
            underEachAllocation([] { return renameLocalUserIfExists("bob", "cloud"); }),
        };
        if (results[0] != "-1 -1 -1 -1 -1 0 " || results[1] != "-1 -1 0 0 0 0 " ||
            results[2] != "0 0 0 0 0 -2 -2 -3 -3 -3 -3 0 0 ") {
            found(results[0] + "; " + results[1] + "; " + results[2]);
        }
        const std::string last = requestFacts().back();
        if (requestFacts().size() != 3 || !last.starts_with("did event bob ")) {
            found("the event of what was done is not the last: " + last);
        }
    };
    EXPECT_EQ(isolated(calls), "");
}

// ---- the log's clock ------------------------------------------------------------------------------

TEST(Log, TellsTheLocalTime)
{
    const auto log = [] {
        prepareDevice({});
        setenv("TZ", "UTC-5", 1);
        logStatement(LogLevel::Error, "unit.cpp", 42, "function", "text\n");
        if (logFile() != "Mar  4 2026 10:06:07 ERROR:unit.cpp:42 text\n") {
            found(logFile());
        }
    };
    EXPECT_EQ(isolated(log), "");
}

// ---- the loop notices what is planted -----------------------------------------------------------

void (*plant)(ITransaction*) = nullptr;
void planted(ITransaction* transaction)
{
    execute(transaction);
    if (faultStruck()) {
        plant(transaction);
    }
}
void leak(ITransaction*)
{
    static std::array<void*, 64> lost;
    static std::size_t count = 0;
    lost.at(count++ % lost.size()) = malloc(1);
}
void admit(ITransaction* transaction)
{
    std::string response;
    AddRemoteUserHandler(transaction, response);
}

TEST(Loop, NoticesWhatIsPlanted)
{
    const struct {
        const char* variant;
        void (*plant)(ITransaction*);
        const char* finding;
    } plants[] = {
        {"unknown", leak, "resources were left behind"},
        {"add_by_locked", admit, "admitted what is else refused"},
        {"unknown", [](ITransaction*) { abort(); }, "allocation 1, error 12: ended the process, status 6"},
        {"unknown", [](ITransaction*) { alarm(1), pause(); }, "ended the process, status 14"},
        {"unknown", [](ITransaction*) { throw 1; }, "an exception left execute"},
    };
    for (const auto& row : plants) {
        plant = row.plant;
        const auto variant = std::find_if(
            variants().begin(), variants().end(), [&](const Variant& one) { return one.name == row.variant; });
        EXPECT_NE(sweep(*variant, planted).find(row.finding), std::string::npos) << row.finding;
    }
}

} // namespace

/** What has run, printed at the end; and whether everything occurred, when every test did run. */
struct Figures : testing::Environment {
    void TearDown() override
    {
        std::printf("%s", underProot() ? "under proot replies are cut at every 16th byte only\n" : "");
        for (std::size_t i = 0; i < KINDS.size(); ++i) {
            std::printf("%8ld trials of %s\n", seen().trials[i], KINDS[i].name);
        }
        const testing::UnitTest& all = *testing::UnitTest::GetInstance();
        if (all.test_to_run_count() != all.total_test_count()) {
            return;
        }
        const bool can_pin = std::string("root") == getenv("DEVICE_WAY");
        for (std::size_t i = 0; i < forced().size(); ++i) {
            const bool needs_pin = forced()[i].difference.find("pinned") != std::string::npos;
            EXPECT_TRUE(seen().forced[i] || (needs_pin && !can_pin)) << "never occurred: " << forced()[i].name;
        }
    }
};
static testing::Environment* const figures = testing::AddGlobalTestEnvironment(new Figures);
