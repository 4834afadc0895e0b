/** A line of `journalctl -o json`. */
#pragma once

#include <optional>
#include <string>

struct JournalRecord {
    std::string message;
    std::string time;    // "2026-11-24 16:13:12", UTC; empty: not told
    std::string process; // its number; empty: not told
};

/** The record that a line is; nothing for what is no object of JSON with a message. */
std::optional<JournalRecord> journal_record(const std::string& line);
