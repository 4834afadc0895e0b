/** Whether a text can be what a row of the table says. */
#pragma once

#include "devkit/broker/explain/statement.h"

#include <string_view>
#include <vector>

/** The texts in place of a row's conversions, found by going back where a literal stood too early.
 * Row and text must outlive it. */
class Fit {
  public:
    Fit(const StatementRow& row, std::string_view text) : row_(row), text_(text) {}

    /** Whether the row says the text, all of it. */
    bool whole();

    /** Takes the text for a beginning, cut in a conversion or in the first literal; how much of it
     * the row says itself, 0 when it is none. */
    std::size_t beginning();

    /** What stands in place of the conversions; of a beginning of as many as there are. */
    const std::vector<std::string_view>& values() const { return values_; }

  private:
    bool place(std::size_t index, std::size_t at);

    const StatementRow& row_;
    std::string_view text_;
    std::vector<std::string_view> values_;
    int attempts_ = 0;
};
