/** The floors of sweeping session records and of writing one. */
#pragma once

#include <string>

/** When a sweep removes what has expired. */
enum class Removal {
    ByName, /**< in the order of names, as a sweep must: it says of each what it removes */
    AtOnce, /**< in the directory's order, which keeps what was just looked at near */
};

/**
 * A sweep: readdir and fstatat, for an expired record its statement, unlink and shm_unlink; and
 * where a user's pins are looked for, open and read. No record is that user's.
 */
void bareSweep(const char* pin_owner, Removal order = Removal::ByName);

/** Writes a record that is not pinned. */
void bareRecord(const std::string& token, const std::string& username);
