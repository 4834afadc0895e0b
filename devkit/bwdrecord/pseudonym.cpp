#include "devkit/bwdrecord/pseudonym.h"

#include <glib.h>
#include <pthread.h>

#include <cstring>

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

/** Writes "LETTER-" and the digits for these bytes. */
void write_part(char* to, char letter, const char* bytes, std::size_t length)
{
    unsigned char digest[DIGEST];
    lock();
    digest_of(digest, inner, bytes, length);
    digest_of(digest, outer, digest, sizeof digest);
    unlock();
    constexpr char DIGITS[] = "0123456789abcdef";
    *to++ = letter;
    *to++ = '-';
    for (std::size_t i = 0; i < SHOWN; ++i) {
        *to++ = DIGITS[digest[i] >> 4U];
        *to++ = DIGITS[digest[i] & 15U];
    }
    *to = '\0';
}

bool equals(const Piece& piece, const char* text)
{
    return piece.length == std::strlen(text) && std::memcmp(piece.at, text, piece.length) == 0;
}

void add_pseudonym(Text* out, const Piece& name)
{
    if (name.length == 0 || equals(name, "(null)")) {
        text_add_json(out, name.at, name.length);
        return;
    }
    char pseudonym[PSEUDONYM_SIZE];
    pseudonym_of(pseudonym, name.at, name.length);
    text_add(out, pseudonym, std::strlen(pseudonym));
}

bool is_word(char c)
{
    return g_ascii_isalnum(c) != FALSE || static_cast<unsigned char>(c) >= 0x80;
}

/** The longest name of the request that is the word, or words, at `at`; length 0: none. */
Piece name_at(const Piece& detail, std::size_t at, const Piece& request)
{
    Piece longest;
    if (at > 0 && is_word(detail.at[at - 1])) {
        return longest;
    }
    const std::size_t left = detail.length - at;
    Pieces pieces = pieces_of(request.at, request.length, true);
    for (Piece piece; next_piece(&pieces, &piece);) {
        if (piece.kind == PieceKind::Name && piece.length > longest.length &&
            piece.length <= left && std::memcmp(detail.at + at, piece.at, piece.length) == 0 &&
            (piece.length == left || !is_word(detail.at[at + piece.length]))) {
            longest = piece;
        }
    }
    return longest;
}

void add_detail(Text* out, const Piece& detail, const Piece& request)
{
    std::size_t shown = 0;
    for (std::size_t at = 0; at < detail.length;) {
        const Piece name = name_at(detail, at, request);
        if (name.length == 0) {
            ++at;
            continue;
        }
        text_add_json(out, detail.at + shown, at - shown);
        add_pseudonym(out, name);
        at += name.length;
        shown = at;
    }
    text_add_json(out, detail.at + shown, detail.length - shown);
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

void add_redacted(Text* out, const char* text, std::size_t length, const Piece& request)
{
    Pieces pieces = pieces_of(text, length, pseudonyms_wanted());
    for (Piece piece; next_piece(&pieces, &piece);) {
        switch (piece.kind) {
        case PieceKind::Plain:
            text_add_json(out, piece.at, piece.length);
            break;
        case PieceKind::Secret:
            text_add(out, SECRET_STAND_IN, sizeof SECRET_STAND_IN - 1);
            break;
        case PieceKind::Pair:
            text_add(out, PAIR_STAND_IN, sizeof PAIR_STAND_IN - 1);
            break;
        case PieceKind::Name:
            add_pseudonym(out, piece);
            break;
        case PieceKind::Detail:
            add_detail(out, piece, request);
            break;
        }
    }
}
