/** Numbers that a seed and a step decide, whatever came before. */
#pragma once

#include <cstdint>
#include <random>

class Random {
  public:
    Random(std::uint32_t seed, std::uint32_t step)
    {
        std::seed_seq words{seed, step};
        engine_.seed(words);
    }

    /** 0 to `count` - 1. */
    std::uint64_t below(std::uint64_t count) { return engine_() % count; }
    bool once_in(std::uint64_t count) { return below(count) == 0; }
    bool percent(std::uint64_t chance) { return below(100) < chance; }

    template<class List> const auto& of(const List& list)
    {
        return *std::next(std::begin(list), static_cast<std::ptrdiff_t>(below(std::size(list))));
    }

  private:
    std::mt19937_64 engine_;
};
