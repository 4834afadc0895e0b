#include "common/hash.h"

#include <gtest/gtest.h>
#include <nettle/md4.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>

namespace {

using Digest = std::array<unsigned char, 16>;

// Other plug-ins keep contexts of their own.
static_assert(offsetof(MD4_CTX, lo) == 0 && offsetof(MD4_CTX, hi) == 4);
static_assert(offsetof(MD4_CTX, a) == 8 && offsetof(MD4_CTX, b) == 12);
static_assert(offsetof(MD4_CTX, c) == 16 && offsetof(MD4_CTX, d) == 20);
static_assert(offsetof(MD4_CTX, buffer) == 24 && offsetof(MD4_CTX, block) == 88);
static_assert(sizeof(MD4_CTX) == 152 && sizeof(MD4_u32plus) == 4);

/** The digest of `text`, absorbed in pieces of the sizes that `next` gives. */
template<typename Next> Digest md4(const std::string& text, Next next)
{
    MD4_CTX ctx;
    MD4_Init(&ctx);
    for (std::size_t at = 0, size = 0; at < text.size(); at += size) {
        size = std::min<std::size_t>(next(), text.size() - at);
        MD4_Update(&ctx, text.data() + at, size);
    }
    Digest digest;
    MD4_Final(digest.data(), &ctx);
    return digest;
}

std::string hexadecimal(const Digest& digest)
{
    std::string text;
    for (const unsigned byte : digest) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 0xf];
    }
    return text;
}

TEST(Md4, PublishedVectors) // RFC 1320, A.5
{
    const struct {
        const char *text, *digest;
    } cases[] = {
        {"", "31d6cfe0d16ae931b73c59d7e0c089c0"},
        {"a", "bde52cb31de33e46245e05fbdbd6fb24"},
        {"abc", "a448017aaf21d8525fc10ae87aa6729d"},
        {"message digest", "d9130a8164549fe818874806e1c7014b"},
        {"abcdefghijklmnopqrstuvwxyz", "d79e1c308aa5bbcdeea8ed63df412da9"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "043f8582f241db351ce627e153e7f0e4"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
            "e33b4ddc9c38f2199c3e7b164fcc0536"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(hexadecimal(md4(row.text, [] { return 1000U; })), row.digest) << row.text;
        EXPECT_EQ(hexadecimal(md4(row.text, [] { return 1U; })), row.digest) << row.text;
    }
}

// Every size around the ends of four blocks, in pieces of every size, and in two of every size.
TEST(Md4, AgreesWithNettleInPiecesOfAnySize)
{
    std::minstd_rand random(1);
    std::string text;
    for (int i = 0; i < 260; ++i) {
        md4_ctx ctx;
        Digest expected;
        md4_init(&ctx);
        md4_update(&ctx, text.size(), reinterpret_cast<const unsigned char*>(text.data()));
        md4_digest(&ctx, expected.size(), expected.data());
        for (std::size_t piece = 1; piece <= text.size() + 1; ++piece) {
            std::size_t next = piece;
            ASSERT_EQ(md4(text, [&] { return piece; }), expected) << text.size() << ' ' << piece;
            ASSERT_EQ(md4(text, [&] { return std::exchange(next, 1000); }), expected) << text.size() << ' ' << piece;
        }
        text += static_cast<char>(random());
    }
}

TEST(Md4, CountsAndClears)
{
    MD4_CTX fresh = {};
    MD4_Init(&fresh);
    EXPECT_EQ(fresh.a, 0x67452301U);
    EXPECT_EQ(fresh.d, 0x10325476U);
    // As many bytes as the low part holds have been absorbed; the last 63 of them are pending.
    const struct {
        MD4_u32plus hi, hi_after;
    } cases[] = {{0, 1}, {7, 8}, {0xffffffff, 0}};
    for (const auto& row : cases) {
        MD4_CTX ctx = fresh;
        ctx.lo = 0x1fffffff;
        ctx.hi = row.hi;
        md4_ctx other = {};
        md4_init(&other);
        other.count = ((std::uint64_t{row.hi} << 29) + 0x1fffffff) / 64;
        other.index = 63;

        MD4_Update(&ctx, "secret", 6);
        EXPECT_EQ(ctx.lo, 5U);
        EXPECT_EQ(ctx.hi, row.hi_after);
        MD4_Update(&ctx, nullptr, 0);
        Digest digest;
        MD4_Final(digest.data(), &ctx);
        md4_update(&other, 6, reinterpret_cast<const unsigned char*>("secret"));
        Digest expected;
        md4_digest(&other, expected.size(), expected.data());
        EXPECT_EQ(digest, expected) << row.hi;
        const MD4_CTX cleared = {};
        EXPECT_EQ(std::memcmp(&ctx, &cleared, sizeof ctx), 0);
    }
}

} // namespace
