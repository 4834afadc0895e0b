#include "devkit/broker/explain/statement.h"

#include "devkit/broker/explain/fit.h"
#include "devkit/broker/explain/table.h"
#include "devkit/broker/explain/tables.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace {

/** The columns of docs/statements.tsv. */
enum Column {
    LEVEL,
    UNIT,
    LINE,
    FUNCTION,
    FORMAT,
    SEEN_BY,
    MEANING,
    REMEDY,
};

int number_of(std::string_view text)
{
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/** The name in front of an equals sign that ends the literal. */
std::string label_behind(std::string_view literal)
{
    if (!literal.ends_with('=')) {
        return "";
    }
    literal.remove_suffix(1);
    const auto before = literal.find_last_not_of("abcdefghijklmnopqrstuvwxyz0123456789_");
    return std::string(literal.substr(before == std::string_view::npos ? 0 : before + 1));
}

/** Whether the statement names its own file and line, by its first two conversions. */
bool names_its_place(std::string_view format)
{
    return format.find(":%s:%d") != std::string_view::npos;
}

Conversion::Kind kind_of(const StatementRow& row, const std::string& label)
{
    using enum Conversion::Kind;
    if (row.conversions.size() < 2 && names_its_place(row.format)) {
        return Repeated;
    }
    if (label == "smbhash" || label == "syshash" || label == "request" ||
        row.format.find("invalid hash value") != std::string_view::npos) {
        return Secret;
    }
    if (label == "error_detail") {
        return Repeated; // which the reply in front of it says as well
    }
    return label == "respond" ? Reply : Shown;
}

/** Takes the format apart into what it says itself and its conversions. */
void take_apart(StatementRow& row)
{
    const std::string_view format = row.format.substr(0, row.format.find("\\n"));
    row.literals.emplace_back();
    for (std::size_t at = 0; at < format.size(); ++at) {
        if (format[at] != '%') {
            row.literals.back() += format[at];
            continue;
        }
        at = format.find_first_of("sd", at);
        std::string label = label_behind(row.literals.back());
        const auto kind = kind_of(row, label);
        row.conversions.push_back({std::move(label), format[at] == 'd', kind});
        row.literals.emplace_back();
    }
    if (!row.conversions.empty() && row.meaning.ends_with("reason")) {
        row.conversions.back().label = "reason";
    }
}

std::size_t said_itself(const StatementRow& row)
{
    std::size_t size = 0;
    for (const std::string& literal : row.literals) {
        size += literal.size();
    }
    return size;
}

std::string_view between(std::string_view text, std::string_view begin, std::string_view end)
{
    const auto at = text.find(begin);
    if (at == std::string_view::npos) {
        return "";
    }
    text.remove_prefix(at + begin.size());
    return text.substr(0, text.find(end));
}

/** What may be repeated of the values. */
std::vector<Value> shown(const StatementRow& row, const std::vector<std::string_view>& values)
{
    std::vector<Value> shown;
    for (std::size_t i = 0; i < values.size() && i < row.conversions.size(); ++i) {
        const Conversion& conversion = row.conversions[i];
        if (conversion.kind == Conversion::Kind::Shown) {
            shown.push_back({conversion.label, std::string(values[i])});
        } else if (conversion.kind == Conversion::Kind::Reply) {
            shown.push_back({"status", std::string(between(values[i], "status=\"", "\""))});
            const auto reason = between(values[i], "<xs:error-details><![CDATA[", "]]>");
            if (!reason.empty()) {
                shown.push_back({"reason", std::string(reason)});
            }
        }
    }
    return shown;
}

bool may_stand_at(const StatementRow& row, const Location& location)
{
    return row.level == location.level && row.unit == location.unit &&
           (row.line == 0 || row.line == location.line);
}

/** The statement whose beginning a text is, if one row alone says so much of it, and more than
 * `least`; a null row when several say as much. */
std::optional<Said>
cut_statement(const Location& location, std::string_view text, std::size_t least)
{
    std::optional<Said> best;
    for (const StatementRow& row : statements()) {
        Fit fit(row, text);
        const auto said = may_stand_at(row, location) ? fit.beginning() : 0;
        if (said > least) {
            auto values = fit.values();
            if (!values.empty()) {
                values.pop_back(); // which goes on, or holds what the row says behind it
            }
            best = Said{&row, nullptr, location.line, shown(row, values), true};
            least = said;
        } else if (best && said == least) {
            best->row = nullptr;
        }
    }
    return best;
}

} // namespace

const std::vector<StatementRow>& statements()
{
    static const auto all = [] {
        std::vector<StatementRow> rows;
        for (const Cells& cells : rows_of(STATEMENTS_TABLE)) {
            rows.push_back(
                {.level = cells.at(LEVEL),
                 .unit = cells.at(UNIT),
                 .line = number_of(cells.at(LINE)),
                 .function = cells.at(FUNCTION),
                 .format = cells.at(FORMAT),
                 .meaning = cells.at(MEANING),
                 .remedy = cells.at(REMEDY)}
            );
            take_apart(rows.back());
        }
        return rows;
    }();
    return all;
}

bool is_unit(std::string_view name)
{
    return std::any_of(statements().begin(), statements().end(), [name](const auto& row) {
        return row.unit == name;
    });
}

std::string Said::value(std::string_view label) const
{
    const auto found = std::find_if(values.begin(), values.end(), [label](const Value& value) {
        return value.label == label;
    });
    return found == values.end() ? "" : found->text;
}

std::optional<Said> statement_of(const Location& location, std::string_view text)
{
    std::optional<Said> best;
    for (const StatementRow& row : statements()) {
        if (!may_stand_at(row, location) || (best && said_itself(*best->row) > said_itself(row))) {
            continue;
        }
        Fit fit(row, text);
        if (!fit.whole()) {
            continue;
        }
        if (best && best->row->format == row.format) {
            best->other = &row;
        } else if (!best || said_itself(*best->row) < said_itself(row)) {
            best = Said{&row, nullptr, location.line, shown(row, fit.values()), false};
        }
    }
    const auto cut = cut_statement(location, text, best ? said_itself(*best->row) : 0);
    if (cut) { // the more of it a row says itself the better, if only of a beginning
        return cut->row != nullptr ? cut : std::nullopt;
    }
    return best;
}
