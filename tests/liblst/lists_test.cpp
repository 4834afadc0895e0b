#include "tests/liblst/calls.h"
#include "tests/liblst/support.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

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

TEST(Lists, ReadDirHasTheDirectorysOrderAndNamesOfAnyLength)
{
    const std::string beyond_a_dirent(1000, 'n');
    const struct {
        Items given, names;
        int error;
    } cases[] = {
        {{"z", ".", beyond_a_dirent, "..", "a", ".hidden", "..."}, {"z", beyond_a_dirent, "a", ".hidden", "..."}, 0},
        {{"..", "."}, {}, 0},
        {{}, {}, 0},
        {{"a", "b"}, {}, EIO},
    };
    for (const auto& row : cases) {
        alignas(dirent64) char entry[1200] = {};
        std::size_t at = 0;
        const Instead listed(on_readdir64, [&](DIR* directory) -> dirent64* {
            EXPECT_EQ(fcntl(dirfd(directory), F_GETFD), FD_CLOEXEC);
            if (at == row.given.size()) {
                errno = row.error != 0 ? row.error : errno;
                return nullptr;
            }
            const std::string& name = row.given[at++];
            std::memcpy(entry + offsetof(dirent64, d_name), name.c_str(), name.size() + 1);
            return reinterpret_cast<dirent64*>(entry);
        });
        errno = ERANGE;
        EXPECT_EQ(items(lstReadDir("/")), row.names);
        EXPECT_EQ(errno, row.error != 0 ? row.error : ERANGE);
    }
    EXPECT_EQ(lstReadDir("/nonexistent"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Lists, GrowToExactlyWhatTheyHold)
{
    std::vector<std::size_t> pointers;
    const Instead counted(on_realloc, [&](void* old, std::size_t size) {
        pointers.push_back(size / sizeof(void*));
        return __real_realloc(old, size);
    });
    char** list = nullptr;
    char** map = nullptr;
    void** collection = nullptr;
    for (int i = 0; i < 4; ++i) {
        lstPush(&list, "item");
        mapPush(&map, "key", "value");
        pCollect(&collection, Strdup("item"));
    }
    EXPECT_EQ(pointers, (std::vector<std::size_t>{2, 3, 2, 3, 5, 3, 4, 7, 4, 5, 9, 5}));
    lstFree(list);
    lstFree(map);
    pClean(collection);
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
    for (const char* absent : {"two", "Key", "ke", "keys", ""}) { // "two" is a value
        errno = ERANGE;
        EXPECT_EQ(getMapValue(map, absent), nullptr) << absent;
        EXPECT_EQ(getMapValues(map, absent), nullptr) << absent;
        EXPECT_STREQ(getConfigValue(map, absent, "default"), "default") << absent;
        EXPECT_EQ(errno, ERANGE) << absent;
    }
    EXPECT_EQ(lstPush(&map, "odd"), 6);
    EXPECT_STREQ(getConfigValue(map, "key", "default"), "default");
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(getMapValue(map, "key"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    errno = 0;
    EXPECT_EQ(getMapValues(map, "key"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    lstFree(map);
}

} // namespace
