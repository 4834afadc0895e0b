/**
 * The transcript: every request with its reply, one JSON object a line, in the order in which they
 * came. Bytes that are not UTF-8 are shown as the replacement character.
 */
#pragma once

#include "devkit/boxwelld/files.h"

#include <optional>
#include <string>

struct Exchange {
    std::string request;
    std::optional<std::string> reply;
    std::optional<std::string> order;
};

void append_to_transcript(const Paths& paths, const Exchange& exchange);
void clear_transcript(const Paths& paths);

/** The exchanges from number `from` on, counted from 1, for people or as one JSON array. */
std::string transcript(const Paths& paths, std::size_t from, bool json);
