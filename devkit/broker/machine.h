/** Why a file cannot be a library of this machine, by the first bytes of it (elf(5)). */
#pragma once

#include <string>

/**
 * A sentence's end: "is for 32-bit ARM, and this broker for 64-bit x86".
 *
 * @return an empty text when the first bytes allow it, or the file cannot be opened
 */
std::string machine_complaint(const std::string& path);
