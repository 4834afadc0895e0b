/** The floors of sweeping session records and of writing one. */
#pragma once

#include <string>

/**
 * A sweep: scandirat sorted by name, then each in turn: fstatat, and for an expired record its
 * statement, unlink and shm_unlink; where a user's pins are looked for, open and read. No record is
 * that user's.
 */
void bareSweep(const char* pin_owner);

/** Writes a record that is not pinned. */
void bareRecord(const std::string& token, const std::string& username);
