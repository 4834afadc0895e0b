/** The pair of password hashes that requests carry as Base64. */
#pragma once

/** Both hashes of one password, NUL-terminated, inside the decoded text. */
struct PasswordPair {
    const char* smb;
    const char* system;
};

/**
 * Decodes a pair and splits it at the first colon; the form of the hashes is not checked.
 *
 * @param text    receives the decoded text, which the caller releases with free(), when there
 *                is one: split, and then holding the pair, or whole; null when memory ran out
 * @param pair    set on success
 * @param base64  Base64 of the SMB hash, a colon, and the system hash
 * @return 0, or -1 when there is no colon or memory ran out
 */
int decodePasswordPair(char** text, PasswordPair* pair, const char* base64);
