// Cutting.
#include "bench/families.h"
#include "common/io.h"

#include <string>

namespace {

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

} // namespace

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
