#include "common/cut.h"

#include <cstring>

std::size_t findMarker(std::string_view text, std::string_view marker, std::size_t from)
{
    const void* found =
        memmem(text.data() + from, text.size() - from, marker.data(), marker.size());
    return found == nullptr
               ? std::string_view::npos
               : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

std::string_view cut(std::string_view text, std::string_view begin, std::string_view end)
{
    const std::size_t found = findMarker(text, begin);
    if (found == std::string_view::npos) {
        return {text.data() + text.size(), 0};
    }
    text.remove_prefix(found + begin.size());
    return text.substr(0, findMarker(text, end));
}
