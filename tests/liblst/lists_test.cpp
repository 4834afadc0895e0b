#include "tests/liblst/support.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <set>

namespace {

TEST(Lists, PushAppendsCopies)
{
    char** list = nullptr;
    std::string word = "first";
    EXPECT_EQ(lstPush(&list, word.c_str()), 0);
    word = "other";
    EXPECT_EQ(lstPush(&list, ""), 1);
    EXPECT_EQ(lstPush(&list, list[0]), 2); // an element of the array that moves
    EXPECT_EQ(items(list), (Items{"first", "", "first"}));
}

TEST(Lists, SplitKeepsNonEmptyFields)
{
    const struct {
        char splitter;
        const char* text;
        Items fields;
    } cases[] = {
        {',', ",a,,b,", {"a", "b"}},
        {',', ",,", {}},
        {';', "a,b", {"a,b"}},
        {'\0', "whole", {"whole"}},
    };
    for (const auto& row : cases) {
        errno = 0;
        EXPECT_EQ(items(lstSplitStr(row.splitter, row.text)), row.fields) << row.text;
        EXPECT_EQ(errno, 0);
    }
}

TEST(Lists, EgrepSearchesAnywhere)
{
    const char* list[] = {"alpha", "Beta", "gamma 12", "", nullptr};
    const struct {
        const char* expression;
        Items matches;
        int error;
    } cases[] = {
        {"a$", {"alpha", "Beta"}, 0},
        {"[0-9]+|^B", {"Beta", "gamma 12"}, 0},
        {"beta", {}, 0},
        {"^$", {""}, 0},
        {"(", {}, EINVAL},
    };
    for (const auto& row : cases) {
        errno = 0;
        EXPECT_EQ(items(lstEgrep(list, row.expression)), row.matches) << row.expression;
        EXPECT_EQ(errno, row.error) << row.expression;
    }
}

TEST(Lists, ReadDirLeavesOutTheDots)
{
    char directory[] = "/tmp/liblst.XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    errno = 0;
    EXPECT_EQ(lstReadDir(directory), nullptr);
    EXPECT_EQ(errno, 0);
    const std::string longest(255, 'n');
    EXPECT_EQ(executeShellFormat("cd %s && touch .hidden ... %s", directory, longest.c_str()), 0);
    const Items found = items(lstReadDir(directory));
    EXPECT_EQ(std::multiset<std::string>(found.begin(), found.end()),
        (std::multiset<std::string>{".hidden", "...", longest}));
    EXPECT_EQ(executeShellFormat("rm -r %s", directory), 0);
    EXPECT_EQ(lstReadDir(directory), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Maps, KeysMayRepeat)
{
    char** map = nullptr;
    EXPECT_EQ(mapPush(&map, "key", "one"), 1);
    EXPECT_EQ(mapPush(&map, "one", "key"), 3);
    EXPECT_EQ(mapPush(&map, "key", "two"), 5);
    EXPECT_EQ(getMapValue(map, "key"), map[1]); // not a copy
    EXPECT_EQ(items(getMapValues(map, "key")), (Items{"one", "two"}));
    EXPECT_STREQ(getConfigValue(map, "one", "default"), "key");
    EXPECT_STREQ(getConfigValue(map, "two", "default"), "default");
    EXPECT_STREQ(getConfigValue(nullptr, "two", "default"), "default");
    EXPECT_EQ(getMapValue(map, "Key"), nullptr);
    EXPECT_EQ(getMapValues(map, "two"), nullptr); // a value
    EXPECT_EQ(lstPush(&map, "odd"), 6);
    EXPECT_EQ(getMapValue(map, "key"), nullptr);
    EXPECT_EQ(getMapValues(map, "key"), nullptr);
    lstFree(map);
}

} // namespace
