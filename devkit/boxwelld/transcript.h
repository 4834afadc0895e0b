/**
 * The transcript: every request with its reply, one JSON object a line, in the order in which they
 * came. Bytes that are not UTF-8 are shown as the replacement character. Lines of before have no
 * times, or no stages.
 */
#pragma once

#include "devkit/boxwelld/files.h"
#include "devkit/boxwelld/stages.h"

#include <chrono>
#include <optional>
#include <string>

struct Exchange {
    std::string request;
    std::optional<std::string> reply;
    std::optional<std::string> order;
    std::chrono::system_clock::time_point came;         // when all of the request had come
    std::optional<std::chrono::microseconds> answer_in; // until the reply; nothing: there is none
    StageTimes stages{};
};

void append_to_transcript(const Paths& paths, const Exchange& exchange);
void clear_transcript(const Paths& paths);

/** Takes away the beginning of a line that a daemon was killed in, or its disk did not take. */
void mend_transcript(const Paths& paths);

/**
 * The exchanges from number `from` on, counted from 1, for people or as one JSON array of
 * {"n", "time", "milliseconds", "stages", "request", "reply", "order"}; `time` is ISO 8601 in UTC,
 * and what there is not is null.
 */
std::string transcript(const Paths& paths, std::size_t from, bool json);
