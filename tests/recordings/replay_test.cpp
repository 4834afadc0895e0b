// The parts of a replay that a recording does not show whole: differences, random names, what moves.
#include "devkit/broker/replay/comparison.h"
#include "devkit/broker/replay/renaming.h"
#include "devkit/broker/replay/unified_diff.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

namespace {

using Lines = std::vector<std::string>;

Lines letters(const std::string& text)
{
    Lines lines;
    for (const char c : text)
        lines.emplace_back(1, c);
    return lines;
}

/** What diff(1) makes of the two, without its names. */
std::string by_diff(const Lines& one, const Lines& other)
{
    std::string command = "bash -c 'diff -U3 <(printf \"";
    for (const std::string& line : one)
        command += line + "\\n";
    command += "\") <(printf \"";
    for (const std::string& line : other)
        command += line + "\\n";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + "\") | tail -n +3'").c_str(), "r"), pclose);
    std::string text;
    std::array<char, 4096> chunk{};
    while (const std::size_t got = fread(chunk.data(), 1, chunk.size(), pipe.get()))
        text.append(chunk.data(), got);
    return text;
}

TEST(UnifiedDiff, IsAsTheToolHasIt)
{
    const std::pair<const char*, const char*> cases[] = {
        {"abcdefghijklmnop", "abcdefghijklmnop"},
        {"abcdefghijklmnop", "abcdefghIjklmnop"},
        {"abcdefghijklmnop", "Abcdefghijklmnop"},
        {"abcdefghijklmnop", "abcdefghijklmnopq"},
        {"abcdefghijklmnop", "xabcdefghijklmno"},
        {"abcdefghijklmnopqrstuvw", "aBcdefghijklmnopqrstuVw"},
        {"abcdefghijk", "abCdefghIjk"},
        {"abcdefghijkl", "abCdefghiJkl"},
        {"abcdefghijklm", "abCdefghijKlm"},
        {"", "ab"},
        {"ab", ""},
    };
    for (const auto& [one, other] : cases) {
        std::string text;
        for (const std::string& line : unified_diff(letters(one), letters(other), "a", "b"))
            text += line + '\n';
        const std::string head = "--- a\n+++ b\n";
        EXPECT_EQ(text.substr(0, head.size()), text.empty() ? "" : head);
        // The tool leaves a count of one out.
        std::string body = text.empty() ? "" : text.substr(head.size());
        for (std::size_t at = 0; (at = body.find(",1 ", at)) != std::string::npos;)
            body.erase(at, 2);
        EXPECT_EQ(body, by_diff(letters(one), letters(other))) << one << ' ' << other;
    }
}

TEST(Renaming, TakesOnlyNamesThatWereMadeUp)
{
    const auto update = [](const std::string& name) {
        return "<xs:set ><User_Name>" + name + "</User_Name>";
    };
    const std::string cut(27, 'l');
    const struct {
        bool keyed;
        std::string recorded;
        std::string made;
        bool matches;
    } cases[] = {
        {false, update("bob12ab"), update("bob12ab"), true},
        {false, update("bob12ab"), update("bobffff"), true},
        {false, update(cut + "12ab"), update(cut + "ffff"), true},
        {false, update("bob12ab"), update("bob12xy"), false},
        {false, update("bub12ab"), update("bob12ab"), false},
        {false, update("eve12ab"), update("eveffff"), false}, // of no word
        {false, update("bob12ab") + " ", update("bobffff"), false},
        {false, "<xs:value>bob12ab</xs:value>", "<xs:value>bobffff</xs:value>", false},
        {true, update("u-0123456789"), update("bobffff"), true},
        {true, update("u-0123456789"), update("u-01234567ab"), false},
        {false, update("u-0123456789"), update("bobffff"), false},
    };
    for (const auto& [keyed, recorded, made, matches] : cases) {
        Renaming renaming(keyed, {"updateuser", "bob", cut + "more"});
        EXPECT_EQ(renaming.matches(recorded, made), matches) << recorded << ' ' << made;
        EXPECT_EQ(renaming.as_recorded(made) == recorded, matches);
    }
}

TEST(Comparison, LeavesOutWhatMoves)
{
    Performance one;
    one.requests = {"<a>\tb\r\n</a>"};
    one.statements = {
        {{"INFO", "a.cpp", 71, "x.cpp:7 [curtime 1764115199]\n"}, {"INFO", "a.cpp", 1316, "n 123456789"}}};
    one.changes = {{"passwd", "zoe", nullptr, "1005"}, {"flag", "f", nullptr, true}};
    one.answer = {{"CODE_SUCCEED", std::nullopt, 5}};
    EXPECT_EQ(lines_of(one, one),
        (Lines{"request", "  <a>\\tb\\r\\n</a>", "statement INFO a.cpp:LINE: x.cpp:LINE [curtime TIME]",
            "statement INFO a.cpp:1316: n 123456789", "change + flag f: true", "code CODE_SUCCEED", "response none"}));
    EXPECT_EQ(lines_of(one, {}), (Lines{"request", "  <a>\\tb\\r\\n</a>"})) << "nothing else is recorded";
}

} // namespace
