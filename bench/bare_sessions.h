/** The floors of sweeping session records and of writing one. */
#pragma once

#include <string>

/** What a sweep has done. */
struct Swept {
    std::size_t seen = 0;    // records that are judged
    std::size_t removed = 0; // and that had expired

    bool operator==(const Swept&) const = default;
};

/**
 * A sweep: readdir and fstatat, for an expired record its statement, unlink and shm_unlink; and
 * where a user's pins are looked for, open and read.
 */
Swept bareSweep(const char* pin_owner);

/** Writes a record that is not pinned. */
void bareRecord(const std::string& token, const std::string& username);
