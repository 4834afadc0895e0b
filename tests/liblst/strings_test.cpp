#include "tests/liblst/support.h"

#include <gtest/gtest.h>

namespace {

TEST(Strings, Replace)
{
    const struct {
        const char *string, *search, *replace, *result;
    } cases[] = {
        {"aaa", "aa", "b", "ba"},
        {"text", "", "+", "text+"},
        {"", "a", "b", ""},
        {"abcabc", "b", "", "acac"},
        {"aab", "ab", "abab", "aabab"},
        {"nest", "nest egg", "x", "nest"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(text(ptReplaceStr(row.string, row.search, row.replace)), row.result);
    }
    char* edited = Strdup("a-a");
    EXPECT_EQ(replaceStrFormat(&edited, "a", "<%s>", edited), 0); // formats what it replaces in
    EXPECT_EQ(text(edited), "<a-a>-<a-a>");
}

TEST(Strings, Cut)
{
    const struct {
        const char *string, *begin, *end, *result;
    } cases[] = {
        {"</a>x<a>one</a><a>two</a>", "<a>", "</a>", "one"},
        {"<a>one", "<a>", "</a>", "one"},
        {"<a>one</a>", "<a>", "", "one</a>"},
        {"one</a>", "<a>", "</a>", ""},
        {"one", "", "e", "on"},
        {"--", "-", "-", ""},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(text(ptCutStr(row.string, row.begin, row.end)), row.result) << row.string;
    }
}

TEST(Strings, EditInPlace)
{
    const struct {
        const char *string, *chopped, *trimmed, *without_gaps;
    } cases[] = {
        {"\r\n a\r\rb \nc\n\r", " ab c", "a\r\rb \nc", "abc"},
        {"\t\v\f x y \t", "\t\v\f x y \t", "x y", "xy"},
        {" \n ", "  ", "", ""},
        {"\xc3\xa4 \x7f~!", "\xc3\xa4 \x7f~!", "\xc3\xa4 \x7f~!", "\xc3\xa4\x7f~!"},
    };
    for (const auto& row : cases) {
        char* chopped = Strdup(row.string);
        char* trimmed = Strdup(row.string);
        char* without_gaps = Strdup(row.string);
        EXPECT_EQ(chopStr(chopped), 0);
        EXPECT_EQ(trimStr(trimmed), 0);
        delGaps(without_gaps);
        EXPECT_EQ(text(chopped), row.chopped);
        EXPECT_EQ(text(trimmed), row.trimmed);
        EXPECT_EQ(text(without_gaps), row.without_gaps);
    }
}

TEST(Strings, FormatOfAnyLength)
{
    const std::string argument(100000, 'x');
    EXPECT_EQ(text(String("<%s|%d>", argument.c_str(), -7)), "<" + argument + "|-7>");
    EXPECT_EQ(String("%ls", L"\xd800"), nullptr); // no multibyte text for it
}

} // namespace
