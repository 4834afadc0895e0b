#include "devkit/broker/replay/unified_diff.h"

#include <algorithm>
#include <cstddef>

namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t AROUND = 3;

/** A line of the whole difference, with the numbers of the next line on either side. */
struct Edit {
    char mark; // ' ', '-' or '+'
    const std::string* line;
    std::size_t old_at;
    std::size_t new_at;
};

/** The lengths of the longest common sequences of the rests from each pair of lines on. */
std::vector<std::vector<unsigned>> common_rests(const Lines& old_lines, const Lines& new_lines)
{
    std::vector<std::vector<unsigned>> lengths(
        old_lines.size() + 1, std::vector<unsigned>(new_lines.size() + 1)
    );
    for (std::size_t i = old_lines.size(); i-- > 0;) {
        for (std::size_t j = new_lines.size(); j-- > 0;) {
            lengths[i][j] = old_lines[i] == new_lines[j]
                                ? lengths[i + 1][j + 1] + 1
                                : std::max(lengths[i + 1][j], lengths[i][j + 1]);
        }
    }
    return lengths;
}

std::vector<Edit> edits_between(const Lines& old_lines, const Lines& new_lines)
{
    const auto lengths = common_rests(old_lines, new_lines);
    std::vector<Edit> edits;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < old_lines.size() || j < new_lines.size()) {
        if (i < old_lines.size() && j < new_lines.size() && old_lines[i] == new_lines[j]) {
            edits.push_back({' ', &old_lines[i], i, j});
            ++i;
            ++j;
        } else if (j == new_lines.size() || (i < old_lines.size() && lengths[i + 1][j] >= lengths[i][j + 1])) {
            edits.push_back({'-', &old_lines[i], i, j});
            ++i;
        } else {
            edits.push_back({'+', &new_lines[j], i, j});
            ++j;
        }
    }
    return edits;
}

/** A range in a hunk's header: its first line counts from 1, an empty one is named by the line
 * before. */
std::string range(std::size_t at, std::size_t count)
{
    return std::to_string(count == 0 ? at : at + 1) + ',' + std::to_string(count);
}

void add_hunk(Lines& out, const std::vector<Edit>& edits, std::size_t from, std::size_t to)
{
    std::size_t old_count = 0;
    std::size_t new_count = 0;
    Lines body;
    for (std::size_t i = from; i < to; ++i) {
        old_count += edits[i].mark != '+' ? 1 : 0;
        new_count += edits[i].mark != '-' ? 1 : 0;
        body.push_back(edits[i].mark + *edits[i].line);
    }
    out.push_back(
        "@@ -" + range(edits[from].old_at, old_count) + " +" +
        range(edits[from].new_at, new_count) + " @@"
    );
    out.insert(out.end(), body.begin(), body.end());
}

} // namespace

Lines unified_diff(
    const Lines& old_lines,
    const Lines& new_lines,
    const std::string& old_name,
    const std::string& new_name
)
{
    const std::vector<Edit> edits = edits_between(old_lines, new_lines);
    Lines out;
    for (std::size_t i = 0; i < edits.size(); ++i) {
        if (edits[i].mark == ' ') {
            continue;
        }
        const std::size_t from = i - std::min(i, AROUND);
        std::size_t last = i; // the last change whose surroundings meet those of the one before
        for (std::size_t next = i; next < edits.size() && next <= last + 2 * AROUND + 1; ++next) {
            last = edits[next].mark != ' ' ? next : last;
        }
        const std::size_t to = std::min(edits.size(), last + AROUND + 1);
        if (out.empty()) {
            out = {"--- " + old_name, "+++ " + new_name};
        }
        add_hunk(out, edits, from, to);
        i = to - 1;
    }
    return out;
}
