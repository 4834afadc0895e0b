#include "common/hash.h"

#include "common/password/secret.h"
#include "liblst/export.h"

#include <crypt.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" {
EXPORTED __thread drand48_data drand48_buf = {};
}

namespace {

// The salt's alphabet; not in crypt's own order.
constexpr char _base64[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789./";
constexpr std::size_t SALT_BEGIN = 3; // behind "$1$"
constexpr std::size_t DIGEST_SIZE = 16;
constexpr char DIGITS[] = "0123456789ABCDEF";

/** Replaces four characters of the salt by the low 24 bits of the next random value. */
void drawSalt(char* salt)
{
    auto bits = static_cast<std::uint32_t>(rndb_rand());
    for (int i = 0; i < 4; ++i) {
        salt[i] = _base64[bits & 0x3f];
        bits >>= 6;
    }
}

/** Clears what crypt_r() leaves of the password. */
void clearWork(crypt_data* work)
{
    clearSecret(*work);
}

/** MD4 over the bytes of `text`, each widened to a 16-bit unit; a block of MD4 at a time. */
void digestWidened(unsigned char* digest, const char* text)
{
    constexpr std::size_t UNITS = sizeof MD4_CTX::buffer / 2;
    MD4_CTX ctx;
    MD4_Init(&ctx);
    std::size_t units = 0;
    do {
        unsigned char wide[2 * UNITS] = {};
        for (units = 0; units < UNITS && text[units] != '\0'; ++units) {
            wide[2 * units] = static_cast<unsigned char>(text[units]);
        }
        MD4_Update(&ctx, wide, 2 * units);
        clearSecret(wide);
        text += units;
    } while (units == UNITS);
    MD4_Final(digest, &ctx);
}

} // namespace

EXPORTED int32_t rndb_rand(void)
{
    long value = 0;
    mrand48_r(&drand48_buf, &value);
    return static_cast<std::int32_t>(value);
}

EXPORTED char* SYS_enc_passwd(const char* plain_passwd)
{
    if (plain_passwd == nullptr || *plain_passwd == '\0') {
        return nullptr;
    }
    char salt[16] = "$1$xxxxxxxx$";
    drawSalt(salt + SALT_BEGIN);
    drawSalt(salt + SALT_BEGIN + 4);
    __attribute__((cleanup(clearWork))) crypt_data work;
    std::memset(&work, 0, sizeof work);
    const char* hash = crypt_r(plain_passwd, salt, &work);
    // "*0" and "*1" stand for a failure.
    return hash != nullptr && *hash != '*' ? strdup(hash) : nullptr;
}

EXPORTED char* SMB_enc_passwd(const char* plain_passwd)
{
    if (plain_passwd == nullptr || *plain_passwd == '\0') {
        return nullptr;
    }
    char* text = static_cast<char*>(std::malloc(2 * DIGEST_SIZE + 1));
    if (text == nullptr) {
        return nullptr;
    }
    unsigned char digest[DIGEST_SIZE];
    digestWidened(digest, plain_passwd);
    char* end = text;
    for (const unsigned char byte : digest) {
        *end = DIGITS[byte >> 4];
        end += byte >= 16 ? 1 : 0; // a number has no leading zero
        *end++ = DIGITS[byte & 0xf];
    }
    *end = '\0';
    return text;
}
