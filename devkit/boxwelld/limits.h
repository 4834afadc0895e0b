/** What a request may come to, so that nothing that reads it takes long or much. */
#pragma once

#include <cstddef>
#include <string_view>

// Far above any request of the plug-in.
constexpr std::size_t MOST_BYTES = 1U << 20U;
constexpr std::size_t MOST_ATTRIBUTES = 64; // of one element; a parser compares each with each
constexpr std::size_t DEEPEST = 64;         // elements within each other

/** Throws a Refusal that tells which of the limits the XML text exceeds; well-formed it need not
 * be. */
void expect_within_limits(std::string_view text);
