#include "syscmd/daemon/conflicts.h"
#include "tests/syscmd/on_device.h"

#include <ctime>

namespace {

TEST_F(OnDevice, twoRenamesWithinASecondDrawTheSameDigits)
{
    time_t began = 0;
    do { // until both fall into one second
        shell("boxwelld seed " SEED_FILE);
        began = time(nullptr);
        EXPECT_EQ(renameLocalUserIfExists("bob", "cloud"), SUCCESS);
        EXPECT_EQ(renameLocalUserIfExists("carol", "cloud"), SUCCESS);
    } while (time(nullptr) != began);
    const auto name = [told = exchanges()](std::size_t exchange) {
        const std::string& request = told.at(exchange).request;
        const std::size_t begin = request.find("<User_Name>") + 11;
        return request.substr(begin, request.find("</User_Name>") - begin);
    };
    EXPECT_EQ(name(1).substr(0, 3) + name(3).substr(0, 5), "bobcarol");
    EXPECT_EQ(name(1).substr(3), name(3).substr(5));
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
