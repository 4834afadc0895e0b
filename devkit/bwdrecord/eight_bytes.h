/** Eight bytes of a text looked at together, each by the top bit of what comes of it. */
#pragma once

#include <endian.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

constexpr std::ptrdiff_t EIGHT = sizeof(std::uint64_t);
constexpr std::uint64_t EACH_BYTE = 0x0101010101010101U;
constexpr std::uint64_t TOP_BITS = EACH_BYTE << 7U;

/** The first is the lowest, so that a borrow or carry goes from each to those behind it. */
inline std::uint64_t eight_bytes(const char* at)
{
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, at, sizeof bytes);
    return le64toh(bytes);
}
