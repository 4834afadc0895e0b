/** Text between two markers, as a view: what the copying cutters and the readers are made of. */
#pragma once

#include <string_view>

/** Offset of the first `marker` in `text` at or behind `from` (not beyond its end), else npos. */
std::size_t findMarker(std::string_view text, std::string_view marker, std::size_t from = 0);

/**
 * The part of `text` behind the first `begin`, up to the next `end` or else to the end of `text`;
 * empty when there is no `begin`. The view is into `text`.
 */
std::string_view cut(std::string_view text, std::string_view begin, std::string_view end);
