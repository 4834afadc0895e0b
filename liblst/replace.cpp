#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/format.h"
#include "liblst/grow.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"

#include <cstring>

namespace {

constexpr std::size_t FIRST_CAPACITY = 16;

/** Where a text occurs in another one, so that measuring and writing search only once. */
struct Matches {
    const char** starts;
    std::size_t count;
    std::size_t capacity;
};

void releaseMatches(const Matches* matches)
{
    std::free(matches->starts);
}

/** strstr(), quicker where the first byte of `search` finds it, as where matches are dense. */
const char* findNext(const char* string, const char* search, std::size_t length)
{
    const char* candidate = std::strchr(string, *search);
    if (candidate == nullptr || std::strncmp(candidate, search, length) == 0) {
        return candidate;
    }
    return std::strstr(candidate + 1, search);
}

/** Notes every occurrence of `search`, not empty, from left to right without overlaps. */
bool findMatches(Matches& matches, const char* string, const char* search, std::size_t length)
{
    while ((string = findNext(string, search, length)) != nullptr) {
        if (matches.count == matches.capacity &&
            !growArray(matches.starts, matches.capacity, FIRST_CAPACITY)) {
            return false;
        }
        matches.starts[matches.count++] = string;
        string += length;
    }
    return true;
}

/** Copies the bytes of [from, end) and returns the place behind them. */
char* copyUpTo(char* to, const char* from, const char* end)
{
    return static_cast<char*>(mempcpy(to, from, static_cast<std::size_t>(end - from)));
}

} // namespace

EXPORTED char* ptReplaceStr(const char* string, const char* search, const char* replace)
{
    if (string == nullptr || search == nullptr || replace == nullptr) {
        return badArgument<char*>(nullptr);
    }
    if (*search == '\0') {
        return String("%s%s", string, replace);
    }
    const std::size_t search_length = std::strlen(search);
    __attribute__((cleanup(releaseMatches))) Matches matches = {};
    if (!findMatches(matches, string, search, search_length)) {
        return nullptr;
    }
    const std::size_t length = std::strlen(string);
    const std::size_t replace_length = std::strlen(replace);
    const std::size_t kept = length - matches.count * search_length;
    char* result = static_cast<char*>(std::malloc(kept + matches.count * replace_length + 1));
    if (result == nullptr) {
        return nullptr;
    }
    char* to = result;
    const char* from = string;
    for (std::size_t i = 0; i < matches.count; ++i) {
        to = copyUpTo(to, from, matches.starts[i]);
        to = copyUpTo(to, replace, replace + replace_length);
        from = matches.starts[i] + search_length;
    }
    *copyUpTo(to, from, string + length) = '\0';
    return result;
}

EXPORTED int replaceStrFormat(char** string, const char* search, const char* format, ...)
{
    if (string == nullptr || *string == nullptr || search == nullptr || format == nullptr) {
        return badArgument(-1);
    }
    AUTO_FREE char* replace = nullptr;
    FORMAT_ARGUMENTS(replace, format);
    if (replace == nullptr) {
        return -1;
    }
    char* replaced = ptReplaceStr(*string, search, replace);
    if (replaced == nullptr) {
        return -1;
    }
    std::free(*string);
    *string = replaced;
    return 0;
}
