/** A table for people: columns under each other, as wide as the terminal. */
#pragma once

#include <string>
#include <vector>

/** How a line is shown, where colours are. */
enum class Style {
    Plain,
    Heading,
    Warning
};

struct TableRow {
    std::vector<std::string> cells;
    Style style = Style::Plain;
};

/** `text` in its style, by the terminal's control sequences (console_codes(4)). */
std::string styled(const std::string& text, Style style, bool colours);

/**
 * `text` for a terminal: control characters, backslashes and what is no UTF-8 as "\xNN", so that a
 * name cannot move the cursor or look like another one.
 */
std::string printable(const std::string& text);

/** Columns that a printable text takes on a terminal. */
std::size_t width_of(const std::string& text);

/**
 * The rows, each column as wide as its widest cell. Where that is more than `width`, the widest
 * columns become narrower, and their cells go on in further lines: nothing is left out.
 *
 * @param rows   printable cells; a row may have fewer than others
 * @param width  columns of the terminal; 0: no limit
 * @return lines with their ends, indented by two blanks, without blanks at their ends
 */
std::string table(const std::vector<TableRow>& rows, std::size_t width, bool colours);
