/** Base64 of credentials and of pairs of hashes. */
#pragma once

/**
 * Decodes Base64 (RFC 4648, standard alphabet); other characters are passed over.
 *
 * @return the decoded bytes as a newly allocated NUL-terminated text, which the caller releases
 *         with free(); null for null or when memory runs out
 */
char* ptDecodeBase64(const char* b64str);
