/** A command as recorded and as it was made again, in lines that can be compared. */
#pragma once

#include "devkit/recording/recording.h"

#include <string>
#include <vector>

/** What a command did and said. */
struct Performance {
    std::vector<std::string> requests;
    std::optional<std::vector<RecordedStatement>> statements;
    std::vector<FactChange> changes;
    std::optional<RecordedAnswer> answer;
};

/** The recorded one. */
Performance recorded_performance(const RecordedCommand& command);

/**
 * The performance in lines, a line for each element of a request. Left out is what legitimately is
 * another each time: source lines of up to three digits, points in time, and the changes that the
 * daemon makes, which follow from the requests. What `other` does not have is left out, too.
 */
std::vector<std::string> lines_of(const Performance& performance, const Performance& other);
