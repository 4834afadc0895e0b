/**
 * Password hashes: what the device stores of a user's password, and the MD4 digest and the random
 * numbers behind them. For C and C++. The plug-in exports all of it.
 *
 * Conventions:
 *  1. A hash is a newly allocated string, which the caller releases with free(); null for a null or
 *     empty password, for which nothing is allocated, and when memory runs out.
 *  2. Everything is re-entrant: a digest's state is the caller's, the generator's is the thread's.
 *     Nothing is logged.
 *  3. The digest's functions have the names that OpenSSL gives its own. A source that includes
 *     <openssl/md4.h> does so first: the digest's declarations are then OpenSSL's.
 *  4. Salts are drawn from the thread's generator, which is never seeded: they repeat on every
 *     thread, and only tell equal passwords of one thread apart.
 */
#pragma once

#include <stdint.h>
#include <stdlib.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifndef HEADER_MD4_H // OpenSSL's
/** A 32-bit unsigned word of MD4. */
typedef uint32_t MD4_u32plus;

/** An MD4 digest in the making. */
typedef struct {
    MD4_u32plus lo;           /**< the low 29 bits of the count of bytes absorbed */
    MD4_u32plus hi;           /**< the bits of that count above them */
    MD4_u32plus a, b, c, d;   /**< the chaining values */
    unsigned char buffer[64]; /**< input that does not fill a block yet */
    MD4_u32plus block[16];    /**< the words of the block at work */
} MD4_CTX;

/** Begins an MD4 digest (RFC 1320). */
void MD4_Init(MD4_CTX* ctx);

/** Absorbs `size` bytes; pieces of any size give the same digest as all at once. */
void MD4_Update(MD4_CTX* ctx, const void* data, unsigned long size);

/** Writes the digest, 16 bytes, to `result` and clears the context of everything it absorbed. */
void MD4_Final(unsigned char* result, MD4_CTX* ctx);
#endif

/**
 * This thread's state of the C library's 48-bit generator: zero when the thread starts and never
 * seeded here, so that every thread draws the same sequence. Strict ISO C knows the type by name
 * only.
 */
extern __thread struct drand48_data drand48_buf;

/**
 * The next value of this thread's generator, anywhere in the range of the type; see mrand48_r(3).
 */
int32_t rndb_rand(void);

/**
 * The hash that the system stores: MD5-crypt, "$1$", eight characters of salt, "$", 22 characters.
 * The salt takes two values of this thread's generator.
 *
 * @return the hash; null also when crypt_r(3) refuses the password, errno tells why (ERANGE: longer
 *         than it takes)
 */
char* SYS_enc_passwd(const char* plain_passwd);

/**
 * The hash that SMB stores (NT hash): MD4 over the password, each byte widened to a 16-bit
 * little-endian unit, as upper-case hexadecimal digits.
 *
 * @return the hash; a byte of the digest below 16 is one digit, so it has 16 to 32 of them
 */
char* SMB_enc_passwd(const char* plain_passwd);

#ifdef __cplusplus
}
#endif
