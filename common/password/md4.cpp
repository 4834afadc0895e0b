// MD4, from RFC 1320.
#include "common/hash.h"
#include "common/password/secret.h"
#include "liblst/export.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t BLOCK_SIZE = sizeof MD4_CTX::buffer;
constexpr std::size_t LENGTH_OFFSET = BLOCK_SIZE - 8; // of the message's length in bits
constexpr int LOW_COUNT_BITS = 29;
// Rounds are four alike passes: a loop where size counts, else written out.
#ifdef __OPTIMIZE_SIZE__
constexpr int UNROLLED = 1;
#else
constexpr int UNROLLED = 4;
#endif

// What rounds 2 and 3 add: the square roots of 2 and 3 (RFC 1320, A.3).
constexpr MD4_u32plus SQRT_2 = 0x5a827999;
constexpr MD4_u32plus SQRT_3 = 0x6ed9eba1;

struct Chain {
    MD4_u32plus a, b, c, d;
};

MD4_u32plus littleEndian(MD4_u32plus word)
{
    return std::endian::native == std::endian::little ? word : __builtin_bswap32(word);
}

MD4_u32plus load(const unsigned char* from)
{
    MD4_u32plus word;
    std::memcpy(&word, from, sizeof word);
    return littleEndian(word);
}

void store(unsigned char* to, MD4_u32plus word)
{
    word = littleEndian(word);
    std::memcpy(to, &word, sizeof word);
}

// The functions of the rounds, written so that little is left to do once x is known: it is the
// result of the step before.
struct Select {
    static MD4_u32plus mix(MD4_u32plus x, MD4_u32plus y, MD4_u32plus z)
    {
        return ((y ^ z) & x) ^ z;
    }
};
struct Majority {
    static MD4_u32plus mix(MD4_u32plus x, MD4_u32plus y, MD4_u32plus z)
    {
        return (y & z) + ((y ^ z) & x) + SQRT_2;
    }
};
struct Parity {
    static MD4_u32plus mix(MD4_u32plus x, MD4_u32plus y, MD4_u32plus z)
    {
        return (y ^ z ^ x) + SQRT_3;
    }
};

/** Four steps of a round: one for each chaining value, by its word and its rotation. */
template<typename Function, int SA, int SD, int SC, int SB>
[[gnu::always_inline]] inline void
steps(Chain& v, MD4_u32plus xa, MD4_u32plus xd, MD4_u32plus xc, MD4_u32plus xb)
{
    v.a = std::rotl(v.a + xa + Function::mix(v.b, v.c, v.d), SA);
    v.d = std::rotl(v.d + xd + Function::mix(v.a, v.b, v.c), SD);
    v.c = std::rotl(v.c + xc + Function::mix(v.d, v.a, v.b), SC);
    v.b = std::rotl(v.b + xb + Function::mix(v.c, v.d, v.a), SB);
}

/** Absorbs whole blocks and returns the place behind the last one. */
const unsigned char* body(MD4_CTX* ctx, const unsigned char* data, std::size_t size)
{
    Chain v = {ctx->a, ctx->b, ctx->c, ctx->d};
    MD4_u32plus* const x = ctx->block;
    for (const unsigned char* const end = data + size; data != end;) {
        const Chain saved = v;

#pragma GCC unroll UNROLLED
        for (int i = 0; i < 16; i += 4) {
            // By words: wider loads would wait for the bytes that were just put into the buffer.
            for (int k = i; k < i + 4; ++k, data += sizeof *x) {
                x[k] = load(data);
            }
            steps<Select, 3, 7, 11, 19>(v, x[i], x[i + 1], x[i + 2], x[i + 3]);
        }
#pragma GCC unroll UNROLLED
        for (int i = 0; i < 4; ++i) {
            steps<Majority, 3, 5, 9, 13>(v, x[i], x[i + 4], x[i + 8], x[i + 12]);
        }
#pragma GCC unroll UNROLLED
        for (int i = 0; i < 4; ++i) {
            const int k = (i & 1) << 1 | i >> 1; // 0, 2, 1, 3
            steps<Parity, 3, 9, 11, 15>(v, x[k], x[k + 8], x[k + 4], x[k + 12]);
        }

        v.a += saved.a;
        v.b += saved.b;
        v.c += saved.c;
        v.d += saved.d;
    }
    ctx->a = v.a;
    ctx->b = v.b;
    ctx->c = v.c;
    ctx->d = v.d;
    return data;
}

/** Counts bytes, in the two parts that the context keeps. */
void count(MD4_CTX* ctx, std::uint64_t size)
{
    const std::uint64_t total = (std::uint64_t{ctx->hi} << LOW_COUNT_BITS) + ctx->lo + size;
    ctx->lo = static_cast<MD4_u32plus>(total & ((1U << LOW_COUNT_BITS) - 1));
    ctx->hi = static_cast<MD4_u32plus>(total >> LOW_COUNT_BITS);
}

/** Clears the context; its parts by wide stores, which are quicker than one long fill. */
void clear(MD4_CTX* ctx)
{
    ctx->lo = ctx->hi = ctx->a = ctx->b = ctx->c = ctx->d = 0;
    clearSecret(ctx->buffer);
    clearSecret(ctx->block);
}

} // namespace

EXPORTED void MD4_Init(MD4_CTX* ctx)
{
    ctx->a = 0x67452301;
    ctx->b = 0xefcdab89;
    ctx->c = 0x98badcfe;
    ctx->d = 0x10325476;
    ctx->lo = 0;
    ctx->hi = 0;
}

EXPORTED void MD4_Update(MD4_CTX* ctx, const void* data, unsigned long size)
{
    if (size == 0) {
        return;
    }
    const auto* input = static_cast<const unsigned char*>(data);
    const std::size_t used = ctx->lo % BLOCK_SIZE;
    count(ctx, size);
    if (used != 0) {
        const std::size_t taken = std::min<std::size_t>(size, BLOCK_SIZE - used);
        std::memcpy(ctx->buffer + used, input, taken);
        if (used + taken < BLOCK_SIZE) {
            return;
        }
        body(ctx, ctx->buffer, BLOCK_SIZE);
        input += taken;
        size -= taken;
    }
    const std::size_t rest = size % BLOCK_SIZE;
    if (size >= BLOCK_SIZE) {
        input = body(ctx, input, size - rest);
    }
    std::memcpy(ctx->buffer, input, rest);
}

EXPORTED void MD4_Final(unsigned char* result, MD4_CTX* ctx)
{
    std::size_t used = ctx->lo % BLOCK_SIZE;
    ctx->buffer[used++] = 0x80;
    if (used > LENGTH_OFFSET) {
        std::memset(ctx->buffer + used, 0, BLOCK_SIZE - used);
        body(ctx, ctx->buffer, BLOCK_SIZE);
        used = 0;
    }
    std::memset(ctx->buffer + used, 0, LENGTH_OFFSET - used);
    store(ctx->buffer + LENGTH_OFFSET, ctx->lo << 3);
    store(ctx->buffer + LENGTH_OFFSET + 4, ctx->hi);
    body(ctx, ctx->buffer, BLOCK_SIZE);
    store(result, ctx->a);
    store(result + 4, ctx->b);
    store(result + 8, ctx->c);
    store(result + 12, ctx->d);
    clear(ctx);
}
