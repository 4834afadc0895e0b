/** Text between two markers, as a view: what the copying cutters and the readers are made of. */
#pragma once

#include <string_view>

/**
 * The part of `text` behind the first `begin`, up to the next `end` or else to the end of `text`;
 * empty, and at the end of `text`, when there is no `begin`. The view is into `text`.
 */
std::string_view cut(const char* text, const char* begin, const char* end);
