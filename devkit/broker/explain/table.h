/** Tables that are compiled in: rows of cells between tabs, and texts cut at a separator. */
#pragma once

#include <string_view>
#include <vector>

using Cells = std::vector<std::string_view>;

/** What stands between the separators; one empty piece of an empty text. */
inline Cells pieces_between(std::string_view text, std::string_view separator)
{
    Cells pieces;
    for (auto end = text.find(separator); end != text.npos; end = text.find(separator)) {
        pieces.push_back(text.substr(0, end));
        text.remove_prefix(end + separator.size());
    }
    pieces.push_back(text);
    return pieces;
}

/** The rows of a table, views into it; its heading and empty lines are left out. */
inline std::vector<Cells> rows_of(std::string_view table)
{
    std::vector<Cells> rows;
    for (const std::string_view line : pieces_between(table, "\n")) {
        if (!line.empty()) {
            rows.push_back(pieces_between(line, "\t"));
        }
    }
    rows.erase(rows.begin());
    return rows;
}
