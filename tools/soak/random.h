/** Numbers that a seed and a step decide, whatever came before. */
#pragma once

#include <cstdint>
#include <random>

class Random {
  public:
    Random(std::uint64_t seed, std::uint64_t step) : engine_(mixed(seed + mixed(step))) {}

    /** 0 to `count` - 1. */
    std::uint64_t below(std::uint64_t count) { return engine_() % count; }
    bool once_in(std::uint64_t count) { return below(count) == 0; }
    bool percent(std::uint64_t chance) { return below(100) < chance; }

    template<class List> const auto& of(const List& list)
    {
        return *std::next(std::begin(list), static_cast<std::ptrdiff_t>(below(std::size(list))));
    }

  private:
    static std::uint64_t mixed(std::uint64_t value)
    {
        std::seed_seq words{
            static_cast<std::uint32_t>(value), static_cast<std::uint32_t>(value >> 32U)};
        std::uint32_t parts[2];
        words.generate(parts, parts + 2);
        return parts[0] | static_cast<std::uint64_t>(parts[1]) << 32U;
    }

    std::mt19937_64 engine_;
};
