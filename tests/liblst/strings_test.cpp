#include "tests/liblst/calls.h"
#include "tests/liblst/support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <ctime>
#include <random>

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

// Of two letters: there is hardly a place where no match begins or nearly begins.
TEST(Strings, ReplaceAgreesWithTheCppLibrary)
{
    std::minstd_rand random(1);
    const auto letters = [&](std::size_t longest) {
        std::string result(random() % (longest + 1), 'a');
        std::replace_if(
            result.begin(), result.end(), [&](char) { return random() % 4 == 0; }, 'b');
        return result;
    };
    for (int i = 0; i < 3000; ++i) {
        const std::string string = letters(i % 2 == 0 ? 60 : 3000);
        const std::string search = 'a' + (i % 3 == 0 ? string.substr(string.size() / 2) : letters(5));
        const std::string replace = letters(40);
        std::string expected = string;
        for (std::size_t at = 0; (at = expected.find(search, at)) != expected.npos; at += replace.size()) {
            expected.replace(at, search.size(), replace);
        }
        EXPECT_EQ(text(ptReplaceStr(string.c_str(), search.c_str(), replace.c_str())), expected) << search;
    }
}

// Behind this text there is no memory.
TEST(Strings, ReplaceReadsNothingBehindTheText)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* pages = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    char* end = static_cast<char*>(pages) + page;
    ASSERT_EQ(mprotect(end, page, PROT_NONE), 0);
    EXPECT_EQ(text(ptReplaceStr(std::strcpy(end - 5, "abab"), "b", "-")), "a-a-");
    munmap(pages, 2 * page);
}

// What was compared in vain is not compared again from the next letter on: half a million bytes take
// some milliseconds, and at a quadratic cost three seconds, of the processor's time.
TEST(Strings, ReplaceTakesLinearTime)
{
    constexpr std::size_t SIZE = 1 << 19;
    const std::string same(SIZE, 'a'), half(SIZE / 2, 'a'), few(200, 'a');
    std::string nearly;
    while (nearly.size() < SIZE) {
        nearly += few + 'b';
    }
    const struct {
        const std::string &string, search;
    } cases[] = {{same, half + 'b'}, {same, half + 'b' + half}, {same, half}, {same, "a"}, {same, "ab"},
        {nearly, few + "aab"}, {nearly, few + 'b'}, {nearly, nearly.substr(1, SIZE / 2) + 'a'}};
    for (const auto& row : cases) {
        for (const char* replace : {"", "a rather long replacement"}) {
            const std::clock_t before = std::clock();
            std::free(ptReplaceStr(row.string.c_str(), row.search.c_str(), replace));
            ASSERT_LT(std::clock() - before, CLOCKS_PER_SEC) << row.search.substr(0, 300);
        }
    }
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
        {"to its end \t", "to its end \t", "to its end", "toitsend"},
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

TEST(Strings, ChopFindsALineEndAtEveryPlace)
{
    // Among bytes that differ from one in a bit, or by one.
    const std::string others = "0123456\t\v\f\x0e\x02\x08\x1a\x2a\x4a\x8a\x05\x0f\x1d\x2d\x4d\x8d\x01\x80\xff";
    for (const char line_end : {'\n', '\r'}) {
        for (std::size_t place = 0; place <= others.size(); ++place) {
            std::string string = others;
            char* chopped = Strdup(string.insert(place, 1, line_end).c_str());
            EXPECT_EQ(chopStr(chopped), 0);
            EXPECT_EQ(text(chopped), others) << place;
        }
    }
}

TEST(Strings, WhiteSpaceIsTheLocales)
{
    std::array<unsigned short, 384> classes = {}; // from -128, as the C library's
    classes[128 + ' '] = classes[128 + 0xa0] = _ISspace;
    const unsigned short* table = &classes[128];
    const Instead another_locale(on_ctype_b_loc, [&] { return &table; });
    char* string = Strdup("\xa0 x\xa0y\xe0 \xa0");
    EXPECT_EQ(trimStr(string), 0);
    EXPECT_STREQ(string, "x\xa0y\xe0");
    delGaps(string);
    EXPECT_EQ(text(string), "xy\xe0");
    const TempFile file("\xa0key\xa0=\xa0value");
    EXPECT_EQ(items(readConfig(file.path)), (Items{"key", "value"}));
}

TEST(Strings, FormatOfAnyLength)
{
    const std::string argument(100000, 'x');
    EXPECT_EQ(text(String("<%s|%d>", argument.c_str(), -7)), "<" + argument + "|-7>");
    for (const std::size_t size : {2046U, 2047U, 2048U, 2049U}) {
        EXPECT_EQ(text(String("%s", argument.substr(0, size).c_str())), argument.substr(0, size));
    }
    EXPECT_EQ(String("%ls", L"\xd800"), nullptr); // no multibyte text for it
}

} // namespace
