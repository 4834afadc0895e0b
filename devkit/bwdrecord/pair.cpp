#include "devkit/bwdrecord/pair.h"

#include "devkit/bwdrecord/eight_bytes.h"

#include <glib.h>

namespace {

/** Shorter runs of Base64 are words; the shortest pair of hashes that means something is longer. */
constexpr std::size_t SHORTEST_PAIR = 16;

/** A pair has, padding aside, room for a look that begins at one of any seven bytes in turn. */
constexpr std::ptrdiff_t BETWEEN_LOOKS = EIGHT - 1;
static_assert(SHORTEST_PAIR - 2 == EIGHT + BETWEEN_LOOKS - 1);

/** Which bytes are Base64's, padding aside. */
struct Base64Table {
    bool of[256] = {};

    constexpr Base64Table()
    {
        constexpr char DIGITS[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (const char* c = DIGITS; *c != '\0'; ++c) {
            of[static_cast<unsigned char>(*c)] = true;
        }
    }
};
constexpr Base64Table BASE64;

bool is_base64(char c)
{
    return BASE64.of[static_cast<unsigned char>(c)];
}

/** The end of the run of Base64 characters at `at`, its padding aside. */
const char* end_of_digits(const char* at, const char* end)
{
    while (at < end && is_base64(*at)) {
        ++at;
    }
    return at;
}

/** Behind up to two characters of padding at `at`. */
const char* end_of_padding(const char* at, const char* end)
{
    for (int padding = 0; padding < 2 && at < end && *at == '='; ++padding) {
        ++at;
    }
    return at;
}

/** Whether one of eight bytes is surely none of Base64's: below '+', from ':' to '@', no ASCII. */
bool breaks_run(const char* at)
{
    const std::uint64_t bytes = eight_bytes(at);
    // A borrow or carry comes only of a byte that breaks the run, too.
    const std::uint64_t below = bytes - EACH_BYTE * '+';
    const std::uint64_t between =
        (bytes + EACH_BYTE * (0x80 - ':')) & ~(bytes + EACH_BYTE * (0x80 - 'A'));
    return ((below | between | bytes) & TOP_BITS) != 0;
}

/** Whether this run of Base64 is one of a printable text with a colon. */
bool is_pair(const char* text, std::size_t length)
{
    if (length < SHORTEST_PAIR || length % 4 != 0) {
        return false;
    }
    bool colon = false;
    int state = 0;
    unsigned save = 0;
    for (std::size_t done = 0; done < length;) {
        unsigned char bytes[64];
        const std::size_t step = length - done < sizeof bytes ? length - done : sizeof bytes;
        const std::size_t count = g_base64_decode_step(text + done, step, bytes, &state, &save);
        for (std::size_t i = 0; i < count; ++i) {
            colon = colon || bytes[i] == ':';
            if (bytes[i] < ' ' || bytes[i] > '~') {
                return false;
            }
        }
        done += step;
    }
    return colon;
}

} // namespace

Run next_pair(const char* at, const char* end)
{
    const char* look = at;
    while (end - look >= EIGHT) {
        if (breaks_run(look)) {
            look += BETWEEN_LOOKS;
            continue;
        }
        const char* begin = look;
        while (begin > at && is_base64(begin[-1])) {
            --begin;
        }
        const char* digits = end_of_digits(look, end);
        const auto length = static_cast<std::size_t>(end_of_padding(digits, end) - begin);
        if (is_pair(begin, length)) {
            return {begin, length};
        }
        look = digits < end ? digits + 1 : end; // behind what ends the run
    }
    return {};
}
