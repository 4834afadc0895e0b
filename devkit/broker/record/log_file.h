/** The plug-in's log file on a device: the statements that have come to it. */
#pragma once

#include "devkit/recording/recording.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** Where the log file ends; nothing: there is none. */
std::optional<std::uint64_t> end_of_log();

/** The statements behind that place; of a file that has become shorter all. */
std::vector<RecordedStatement> statements_behind(std::uint64_t end);

/** The statements in a part of a log file; docs/log.md tells what one looks like. */
std::vector<RecordedStatement> statements_in(const std::string& log);
