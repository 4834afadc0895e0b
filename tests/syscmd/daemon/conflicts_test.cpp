#include "syscmd/daemon/conflicts.h"
#include "tests/syscmd/on_device.h"

#include <ctime>

namespace {

/** The name that an account in the way gets. */
std::string derivedName(const char* user)
{
    shell("boxwelld seed " SEED_FILE);
    EXPECT_EQ(renameLocalUserIfExists(user, "cloud"), SUCCESS);
    const std::string sent = exchanges().at(1).request;
    const std::size_t begin = sent.find("<User_Name>") + 11;
    return sent.substr(begin, sent.find("</User_Name>") - begin);
}

TEST_F(OnDevice, twoRenamesWithinASecondDrawTheSameDigits)
{
    time_t began = 0;
    std::string first;
    std::string second;
    do { // until both fall into one second
        began = time(nullptr);
        first = derivedName("bob");
        second = derivedName("carol");
    } while (time(nullptr) != began);
    EXPECT_EQ(first.substr(3), second.substr(5));
}

TEST_F(OnDevice, derivedNameKeeps27Bytes)
{
    shell(
        R"(echo '{"groups":[{"name":"share","id":2002}],"accounts":[{"name":"abcdefghijklmnopqrstuvwxyz0123","id":1001,"group":"share"}]}' | boxwelld seed -)");
    EXPECT_EQ(renameLocalUserIfExists("abcdefghijklmnopqrstuvwxyz0123", "cloud"), SUCCESS);
    shell("getent passwd | grep -E '^abcdefghijklmnopqrstuvwxyz0[0-9a-f]{4}:x:1001:'");
}

TEST_F(OnDevice, withoutAPeerToPeerUserOnlyTheNewNameIsFreed)
{
    EXPECT_EQ(resolveLocalUserConflicts("bob", "bob", nullptr), SUCCESS);
    EXPECT_TRUE(exchanges().empty());
    EXPECT_EQ(resolveLocalUserConflicts("bob", "dave", nullptr), SUCCESS);
    EXPECT_EQ(exchanges().size(), 2U);
    shell("! getent passwd dave");
    shell("boxwelld order refuse busy --skip 1");
    EXPECT_EQ(resolveLocalUserConflicts("bob", "carol", nullptr), -3);
}

} // namespace
