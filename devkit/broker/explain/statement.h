/** The plug-in's log statements: docs/statements.tsv, and which of them a text is. */
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** What a conversion of a format stands for. */
struct Conversion {
    std::string label; // "username" of "username=%s"; else empty
    bool number = false;
    enum class Kind {
        Shown,
        Secret,   // a hash or a request: never repeated
        Reply,    // the daemon's: its status and reason are shown
        Repeated, // what is told already: the statement's own file or line, the reply's reason
    } kind = Kind::Shown;
};

/** A row of the table. */
struct StatementRow {
    std::string_view level, unit;
    int line = 0; // 0: the statement's own source line
    std::string_view function, format, meaning, remedy;
    std::vector<std::string> literals = {}; // around the conversions, without the line end
    std::vector<Conversion> conversions = {};

    bool is_error() const { return level == "ERROR"; }
    /** Whether somebody has to do something about it. */
    bool calls_for_something() const { return is_error() && !remedy.starts_with("nothing"); }
};

const std::vector<StatementRow>& statements();

/** Whether a source file of that name has statements. */
bool is_unit(std::string_view name);

/** What a statement says in place of a conversion; secrets are left out. */
struct Value {
    std::string label; // may be empty
    std::string text;
};

/** Where a statement stands, as the log has it. */
struct Location {
    std::string_view level, unit;
    int line = 0;
};

/** A statement that was said. */
struct Said {
    const StatementRow* row = nullptr;
    const StatementRow* other = nullptr; // the next row that says the same; null: there is none
    int line = 0;
    std::vector<Value> values;
    bool cut = false; // its end is not there

    /** The value of that label; empty when there is none. */
    std::string value(std::string_view label) const;
};

/**
 * The statement that a text is: of rows that fit, the one that says most itself.
 *
 * @param text  without the line end; when no row fits the whole of it and one row alone fits its
 *              beginning, it is that one, cut
 * @return nothing for what the table does not have
 */
std::optional<Said> statement_of(const Location& location, std::string_view text);
