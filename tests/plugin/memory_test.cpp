// What an exchange says when memory runs out at each of its steps.
#include "common/io.h"
#include "liblst/export.h"
#include "syscmd/add_account.h"
#include "syscmd/add_remote_user.h"
#include "syscmd/local_conflicts.h"
#include "syscmd/unregister.h"
#include "syscmd/user_delete.h"
#include "syscmd/user_query.h"
#include "syscmd/user_update.h"
#include "tests/plugin/device.h"

#include <gtest/gtest.h>

// The units' calls come here (--wrap); the one that counts down to zero fails.
static int mallocs_to_failure = 0;
static int copies_to_failure = 0;

extern "C" {
void* __real_malloc(std::size_t size);
char* __real_strndup(const char* text, std::size_t size);
EXPORTED void* __wrap_malloc(std::size_t size);
EXPORTED char* __wrap_strndup(const char* text, std::size_t size);
void* __wrap_malloc(std::size_t size)
{
    return mallocs_to_failure > 0 && --mallocs_to_failure == 0 ? nullptr : __real_malloc(size);
}
char* __wrap_strndup(const char* text, std::size_t size)
{
    return copies_to_failure > 0 && --copies_to_failure == 0 ? nullptr : __real_strndup(text, size);
}
}

namespace {

int queryBob()
{
    char *id = nullptr, *group = nullptr, *email = nullptr;
    const int result = GetUserData(&id, &group, &email, "bob");
    EXPECT_EQ(id, nullptr) << "nothing is handed over";
    return result;
}

using Call = int (*)();
const Call addZoe = [] {
    return AddUser("zoe", nullptr, "z@x", "User");
};
const Call addRemote = [] {
    return AddNetwork("zed", "");
};
const Call deleteBob = [] {
    return DelUser("bob", "bob", ANY_ACCOUNT);
};
const Call updateBob = [] {
    return UpdateUser("1002", "bob", nullptr, nullptr, "", nullptr);
};
const Call renameBob = [] {
    return renameLocalUserIfExists("bob", "cloud");
};

TEST(Memory, EachStepOfAnExchangeSaysThatItFailed)
{
    const struct {
        Call call;
        int malloc; // which allocation fails, and which copy; 0: none
        int copy;
        bool refused;
        int line; // 0: the statement's own
        const char* text;
    } cases[] = {
        {addZoe, 1, 0, false, 533, "ERROR [syscmd:AddUser]: asprintf failed\n"},
        {addZoe, 0, 1, false, 516, "ERROR [syscmd:AddUser]: GetMXLStatus failed\n"},
        {addZoe, 0, 2, true, 509, "ERROR [syscmd:AddUser]: GetMXLErrorDetail failed\n"},
        {addRemote, 1, 0, false, 333, "ERROR [syscmd:AddNetwork]: asprintf failed\n"},
        {addRemote, 0, 1, false, 321, "ERROR [syscmd:AddNetwork]: GetMXLStatus failed\n"},
        {addRemote, 0, 2, true, 314, "ERROR [syscmd:AddNetwork]: GetMXLErrorDetail failed\n"},
        {Unregister, 1, 0, false, 1199, "ERROR [syscmd:Unregister]:unregister.cpp:1199 asprintf()\n"},
        {Unregister, 0, 1, false, 1217, "ERROR [syscmd:Unregister]:unregister.cpp:1217 GetMXLStatus()\n"},
        {Unregister, 0, 2, true, 1226, "ERROR [syscmd:Unregister]:unregister.cpp:1226 GetMXLStatus()\n"},
        {queryBob, 1, 0, false, 0, "ERROR [syscmd:GetUserData]: asprintf failed\n"},
        {queryBob, 0, 1, false, 0, "ERROR [syscmd:GetUserData]: GetMXLStatus failed\n"},
        {queryBob, 0, 4, false, 0, "ERROR [syscmd:GetUserData]: CutStr failed\n"},
        {queryBob, 0, 2, true, 0, "ERROR [syscmd:GetUserData]: GetMXLErrorDetail failed\n"},
        {deleteBob, 2, 0, false, 0, "ERROR [syscmd:DelUser]: asprintf failed\n"},
        {deleteBob, 0, 5, false, 0, "ERROR [syscmd:DelUser]: GetMXLStatus failed\n"},
        {updateBob, 3, 0, false, 0, "ERROR [syscmd:UpdateUser]: asprintf failed\n"},
        {updateBob, 0, 2, false, 0, "ERROR [syscmd:UpdateUser]: GetMXLStatus failed\n"},
        {updateBob, 0, 3, true, 0, "ERROR [syscmd:UpdateUser]: GetMXLErrorDetail failed\n"},
        {renameBob, 2, 0, false, 0,
            "[syscmd:renameLocalUserIfExists]: failed generating hash for renaming conflicting account bob\n"},
    };
    MAX_LOG_LEVEL = 7;
    for (const auto& [call, failing_malloc, failing_copy, refused, line, text] : cases) {
        resetDevice();
        if (refused) {
            shell("boxwelld order refuse busy");
        }
        mallocs_to_failure = failing_malloc;
        copies_to_failure = failing_copy;
        EXPECT_EQ(call(), call == renameBob ? -2 : -1) << text;
        EXPECT_EQ(mallocs_to_failure + copies_to_failure, 0) << "never failed: " << text;
        const Statement said = fileStatements().back();
        EXPECT_EQ(said.text, text);
        EXPECT_TRUE(line == 0 || said.line == line) << said.line;
    }
}

} // namespace
