#include "devkit/broker/explain/fit.h"

namespace {

/** Attempts at placing literals in one text; more are only asked by one that was made for it. */
constexpr int MOST_ATTEMPTS = 10000;

bool may_be(const Conversion& conversion, std::string_view value)
{
    return !conversion.number ||
           (!value.empty() &&
            value.find_first_not_of("0123456789", value[0] == '-') == std::string_view::npos);
}

} // namespace

bool Fit::whole()
{
    return text_.starts_with(row_.literals[0]) && place(1, row_.literals[0].size());
}

std::size_t Fit::beginning()
{
    constexpr std::size_t SHORTEST = 8;
    const std::string& first = row_.literals[0];
    if (!text_.starts_with(first)) {
        const bool is_cut = text_.size() > SHORTEST && first.starts_with(text_);
        return is_cut ? text_.size() : 0;
    }
    std::string_view rest = text_.substr(first.size());
    std::size_t said = first.size();
    for (std::size_t i = 1; i < row_.literals.size(); ++i) {
        const auto at = rest.find(row_.literals[i]);
        values_.push_back(rest.substr(0, at));
        if (at == std::string_view::npos) {
            return said;
        }
        said += row_.literals[i].size();
        rest.remove_prefix(at + row_.literals[i].size());
    }
    return rest.empty() ? said : 0;
}

/** Places literal `index` behind the conversion in front of it, which begins at `at`. */
bool Fit::place(std::size_t index, std::size_t at)
{
    if (index == row_.literals.size()) {
        return at == text_.size();
    }
    const std::string& literal = row_.literals[index];
    const bool last = index + 1 == row_.literals.size();
    if (last && (text_.size() < at + literal.size() || !text_.ends_with(literal))) {
        return false;
    }
    auto found = last ? text_.size() - literal.size() : text_.find(literal, at);
    while (found != std::string_view::npos && ++attempts_ < MOST_ATTEMPTS) {
        const std::string_view value = text_.substr(at, found - at);
        if (may_be(row_.conversions[index - 1], value)) {
            values_.push_back(value);
            if (place(index + 1, found + literal.size())) {
                return true;
            }
            values_.pop_back();
        }
        found = last ? std::string_view::npos : text_.find(literal, found + 1);
    }
    return false;
}
