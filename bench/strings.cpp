// Replacing and cutting.
#include "bench/families.h"
#include "bench/growth.h"
#include "common/io.h"

#include <string>

namespace {

// No constants, of which a compiler would make more for the peers than for a library.
const std::string SEARCH = "&";
const std::string REPLACE = "&amp;";

std::string lines(std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        (text += "line " + std::to_string(i)) += SEARCH;
    }
    return text;
}

/** The floor: one pass that finds, by memchr and memcmp, and writes, into a result that is large
 * enough beforehand. */
Text replaceBarely(const std::string& text, std::size_t size)
{
    char* const result = static_cast<char*>(std::malloc(size));
    char* to = result;
    const char* from = text.c_str();
    const char* const end = from + text.size();
    const char* at = from;
    while ((at = static_cast<const char*>(
                std::memchr(at, SEARCH[0], static_cast<std::size_t>(end - at))
            )) != nullptr) {
        if (std::strncmp(at, SEARCH.c_str(), SEARCH.size()) != 0) {
            ++at;
            continue;
        }
        to = static_cast<char*>(mempcpy(to, from, static_cast<std::size_t>(at - from)));
        to = static_cast<char*>(mempcpy(to, REPLACE.c_str(), REPLACE.size()));
        at += SEARCH.size();
        from = at;
    }
    to = static_cast<char*>(mempcpy(to, from, static_cast<std::size_t>(end - from)));
    *to = '\0';
    return Text(result);
}

Text replaceByStrings(const std::string& text)
{
    std::string result;
    std::size_t from = 0;
    for (std::size_t at = 0; (at = text.find(SEARCH, from)) != std::string::npos;
         from = at + SEARCH.size()) {
        result.append(text, from, at - from).append(REPLACE);
    }
    result.append(text, from);
    return Text(strdup(result.c_str()));
}

Text replaceBySplitting(const std::string& text)
{
    const StringVector pieces(g_strsplit(text.c_str(), SEARCH.c_str(), -1));
    return Text(g_strjoinv(REPLACE.c_str(), pieces.get()));
}

void benchReplace(Frame& frame)
{
    const char* name = "ptReplaceStr, 50,000 matches";
    const std::string text = lines(50000);
    const auto ours = [&] {
        return Text(ptReplaceStr(text.c_str(), SEARCH.c_str(), REPLACE.c_str()));
    };
    frame.compare({.name = name, .against = "one pass", .goal = 1.3}, ours, [&] {
        return replaceBarely(text, 2 * text.size());
    });
    frame.compare({.name = name, .against = "std::string loop", .goal = 0.6}, ours, [&] {
        return replaceByStrings(text);
    });
    frame.compare({.name = name, .against = "g_strsplit, g_strjoinv", .goal = 0.3}, ours, [&] {
        return replaceBySplitting(text);
    });
    frame.grows(name, 25000, [](std::size_t size) {
        return [text = lines(size)] {
            Text(ptReplaceStr(text.c_str(), SEARCH.c_str(), REPLACE.c_str()));
        };
    });
}

/** The floor of a cut: the marks found by memmem, what lies between copied once. */
Text cutBarely(const std::string& text, std::string_view begin, std::string_view end)
{
    const char* const stop = text.data() + text.size();
    const char* from =
        static_cast<const char*>(memmem(text.data(), text.size(), begin.data(), begin.size())) +
        begin.size();
    const char* to = static_cast<const char*>(
        memmem(from, static_cast<std::size_t>(stop - from), end.data(), end.size())
    );
    return Text(strndup(from, static_cast<std::size_t>(to - from)));
}

void benchCut(Frame& frame)
{
    // Half a MiB in front, a quarter to copy, a quarter behind.
    constexpr std::size_t QUARTER = std::size_t{1} << 18;
    const std::string filler(QUARTER, '<');
    const std::string text = filler + filler + "<owner>" + filler + "</owner>" + filler;
    const auto floor = [&] {
        return cutBarely(text, "<owner>", "</owner>");
    };
    frame.compare(
        {.name = "ptCutStr, 1 MiB", .against = "memmem, one copy", .goal = 1.1},
        [&] { return Text(ptCutStr(text.c_str(), "<owner>", "</owner>")); }, floor
    );
    frame.compare(
        {.name = "CutStr, 1 MiB", .against = "memmem, one copy", .goal = 1.1},
        [&] {
            char* result = nullptr;
            CutStr(&result, text.c_str(), "<owner>", "</owner>");
            return Text(result);
        },
        floor
    );
}

} // namespace

void benchStrings(Frame& frame)
{
    benchReplace(frame);
    benchCut(frame);
}

void growReplace(Growth& growth)
{
    growth.measure("replace", {100, 1000, 10000, 100000, 1000000, 10000000}, [](std::size_t bytes) {
        constexpr std::size_t LINE = 10; // about, with its match
        const auto text = std::make_shared<std::string>(lines(bytes / LINE));
        text->resize(bytes, ' ');
        return Curves{
            curveOf(
                "ptReplaceStr",
                [text] {
                    return Text(ptReplaceStr(text->c_str(), SEARCH.c_str(), REPLACE.c_str()));
                }
            ),
            curveOf("floor: one pass", [text] { return replaceBarely(*text, 2 * text->size()); }),
            curveOf("std::string loop", [text] { return replaceByStrings(*text); }),
            curveOf("g_strsplit, g_strjoinv", [text] { return replaceBySplitting(*text); })};
    });
}
