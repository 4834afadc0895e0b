#include "devkit/bwdrecord/pseudonym.h"

#include <glib.h>
#include <pthread.h>

#include <cstdint>
#include <cstring>
#include <iterator>

namespace {

constexpr std::size_t BLOCK = 64; // of SHA-256
constexpr std::size_t DIGEST = 32;
constexpr std::size_t SHOWN = 5; // bytes of a digest

/** HMAC-SHA-256 from one checksum that exists before the first name does: GHmac would allocate for
 * each, and GLib ends the process where it cannot. */
GChecksum* checksum = nullptr;
unsigned char inner[BLOCK];
unsigned char outer[BLOCK];
pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

void lock()
{
    pthread_mutex_lock(&mutex);
}

void unlock()
{
    pthread_mutex_unlock(&mutex);
}

void digest_of(
    unsigned char (&digest)[DIGEST], const unsigned char* pad, const void* bytes, std::size_t length
)
{
    std::size_t size = DIGEST;
    g_checksum_reset(checksum);
    if (pad != nullptr) {
        g_checksum_update(checksum, pad, BLOCK);
    }
    g_checksum_update(checksum, static_cast<const guchar*>(bytes), static_cast<gssize>(length));
    g_checksum_get_digest(checksum, digest, &size);
}

/** The digits of a name's part that came lately. A command's transactions have few names, and its
 * HMAC takes longer than all else of a line. */
struct Known {
    unsigned char length = 0; // 0: none
    char part[63];
    char digits[2 * SHOWN];
};
Known known[64];

Known* place_of(const char* part, std::size_t length)
{
    std::uint32_t hash = 2166136261U; // FNV-1a
    for (std::size_t i = 0; i < length; ++i) {
        hash = (hash ^ static_cast<unsigned char>(part[i])) * 16777619U;
    }
    return &known[(hash ^ hash >> 16U) % std::size(known)];
}

void write_digits(char* to, const char* part, std::size_t length)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    unsigned char digest[DIGEST];
    digest_of(digest, inner, part, length);
    digest_of(digest, outer, digest, sizeof digest);
    for (std::size_t i = 0; i < SHOWN; ++i) {
        *to++ = DIGITS[digest[i] >> 4U];
        *to++ = DIGITS[digest[i] & 15U];
    }
}

/** Writes the digits, worked out or known. */
void write_known(char* to, const char* part, std::size_t length)
{
    if (length == 0 || length > sizeof Known::part) {
        write_digits(to, part, length);
        return;
    }
    Known* const place = place_of(part, length);
    if (place->length != length || std::memcmp(place->part, part, length) != 0) {
        place->length = static_cast<unsigned char>(length);
        std::memcpy(place->part, part, length);
        write_digits(place->digits, part, length);
    }
    std::memcpy(to, place->digits, sizeof place->digits);
}

/** Writes "LETTER-" and the digits for these bytes. */
void write_part(char* to, char letter, const char* bytes, std::size_t length)
{
    to[0] = letter;
    to[1] = '-';
    lock();
    write_known(to + 2, bytes, length);
    unlock();
    to[2 + 2 * SHOWN] = '\0';
}

} // namespace

void pseudonym_key(const char* key)
{
    if (key == nullptr || *key == '\0') {
        return;
    }
    static bool forks = false;
    if (!forks) {
        forks = pthread_atfork(lock, unlock, unlock) == 0;
    }
    if (checksum == nullptr) {
        checksum = g_checksum_new(G_CHECKSUM_SHA256);
    }
    unsigned char block[BLOCK] = {};
    const std::size_t length = std::strlen(key);
    if (length <= BLOCK) {
        for (std::size_t i = 0; i < length; ++i) {
            block[i] = static_cast<unsigned char>(key[i]);
        }
    } else {
        unsigned char digest[DIGEST];
        digest_of(digest, nullptr, key, length);
        std::memcpy(block, digest, sizeof digest);
    }
    for (Known& by_another_key : known) {
        by_another_key.length = 0;
    }
    for (std::size_t i = 0; i < BLOCK; ++i) {
        inner[i] = block[i] ^ 0x36U;
        outer[i] = block[i] ^ 0x5CU;
    }
}

bool pseudonyms_wanted()
{
    return checksum != nullptr;
}

void pseudonym_of(char (&pseudonym)[PSEUDONYM_SIZE], const char* name, std::size_t length)
{
    const auto* sign = static_cast<const char*>(memrchr(name, '@', length));
    const std::size_t user = sign != nullptr ? static_cast<std::size_t>(sign - name) : length;
    write_part(pseudonym, 'u', name, user);
    if (sign != nullptr) {
        const std::size_t end = std::strlen(pseudonym);
        pseudonym[end] = '@';
        write_part(pseudonym + end + 1, 'd', sign + 1, length - user - 1);
    }
}
