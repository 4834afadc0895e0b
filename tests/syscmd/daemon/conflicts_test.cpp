#include "syscmd/daemon/conflicts.h"
#include "tests/syscmd/on_device.h"

namespace {

/** The digits that the account `user`, in the way, is given. */
std::string digits(const std::string& user)
{
    shell("boxwelld seed " SEED_FILE);
    EXPECT_EQ(renameLocalUserIfExists(user.c_str(), "cloud"), SUCCESS);
    const std::string request = exchanges().at(1).request;
    const std::size_t begin = request.find("<User_Name>" + user) + 11 + user.size();
    return request.substr(begin, request.find("</User_Name>") - begin);
}

TEST_F(OnDevice, renamesWithinASecondDrawTheSameDigits)
{
    frozen_time = 1000000000;
    const std::string drawn = digits("bob");
    const int next = rand();
    srand(1000000000);
    for (const char digit : drawn)
        EXPECT_EQ(digit, "0123456789abcdef"[rand() % 16]);
    EXPECT_EQ(rand(), next) << "more was drawn";
    EXPECT_EQ(drawn.size(), 4U);
    EXPECT_EQ(drawn, digits("carol"));
    frozen_time += 1;
    EXPECT_NE(drawn, digits("bob"));
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
