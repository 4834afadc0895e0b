#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/format.h"
#include "liblst/grow.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// A short piece is copied in blocks of this size: a call for each takes longer than finding it.
constexpr std::size_t BLOCK = 16;
constexpr std::size_t SHORT = 4 * BLOCK;
// Letters that are compared in vain for each one passed, before a search is left to memmem().
constexpr std::size_t MOST_IN_VAIN = 8;

std::size_t distance(const char* from, const char* to)
{
    return static_cast<std::size_t>(to - from);
}

/** A text that is looked through from left to right, and what is looked for, which is not empty. */
struct Search {
    const char* begin;
    const char* end;
    const char* wanted;
    std::size_t length;
    std::size_t in_vain; // letters that were compared, at most
};

/**
 * The first match from `from` on, or null. Quicker than memmem() where matches are dense, and where
 * too much is compared in vain left to it: its time is linear, whatever the texts are.
 */
const char* findNext(Search& search, const char* from)
{
    for (; distance(from, search.end) >= search.length; ++from) {
        if (*from != *search.wanted) {
            const std::size_t places = distance(from, search.end) - search.length + 1;
            from = static_cast<const char*>(std::memchr(from, *search.wanted, places));
        }
        if (from == nullptr || std::memcmp(from, search.wanted, search.length) == 0) {
            return from;
        }
        search.in_vain += search.length;
        if (search.in_vain / MOST_IN_VAIN > distance(search.begin, from) + BLOCK) {
            const std::size_t rest = distance(from, search.end);
            return static_cast<const char*>(memmem(from, rest, search.wanted, search.length));
        }
    }
    return nullptr;
}

/** The text in the making, with room for a block behind what it needs. */
struct Result {
    char* text;
    std::size_t length;
    std::size_t capacity;
};

void releaseResult(const Result* result)
{
    std::free(result->text);
}

bool allocate(Result& result, std::size_t capacity)
{
    char* text = static_cast<char*>(std::realloc(result.text, capacity));
    if (text == nullptr) {
        return false;
    }
    result.text = text;
    result.capacity = capacity;
    return true;
}

/**
 * What to allocate beyond `needed`, so that allocations are few: what `rest` bytes more grow by if
 * they do so like the first `taken`, which made `made`, and an eighth; up to twice as much in all.
 */
std::size_t spare(std::size_t needed, std::size_t made, std::size_t taken, std::size_t rest)
{
    if (made <= taken) {
        return 0;
    }
    const double growth = static_cast<double>(made - taken) / static_cast<double>(taken);
    const double expected = growth * static_cast<double>(rest) + static_cast<double>(needed) / 8;
    const std::size_t most = std::min(needed, SIZE_MAX - needed);
    return expected < static_cast<double>(most) ? static_cast<std::size_t>(expected) : most;
}

/** Appends a piece, for which there is room and a block; from its begin on `readable` bytes may be
 * read. */
void append(Result& result, const char* piece, std::size_t length, std::size_t readable)
{
    char* to = result.text + result.length;
    result.length += length;
    if (length > SHORT || length + BLOCK > readable) {
        std::memcpy(to, piece, length);
        return;
    }
    for (const char* end = piece + length; piece < end; piece += BLOCK, to += BLOCK) {
        std::memcpy(to, piece, BLOCK);
    }
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
    const char* const end = string + std::strlen(string);
    Search matches = {string, end, search, std::strlen(search), 0};
    const std::size_t replace_length = std::strlen(replace);
    char blocks[SHORT + BLOCK] = {};
    if (replace_length <= SHORT) {
        replace = std::copy_n(replace, replace_length, blocks) - replace_length;
    }

    __attribute__((cleanup(releaseResult))) Result result = {};
    const char* from = string;
    while (const char* match = findNext(matches, from)) {
        const std::size_t gap = distance(from, match);
        const std::size_t rest = distance(from, end);
        // With all that follows, so that the result grows only where it gets longer.
        const std::size_t needed = result.length + rest + replace_length + BLOCK;
        if (result.text == nullptr || needed > result.capacity) {
            const std::size_t made = result.length + gap + replace_length;
            const std::size_t taken = distance(string, match) + matches.length;
            if (!allocate(result, needed + spare(needed, made, taken, rest))) {
                return nullptr;
            }
        }
        append(result, from, gap, rest);
        append(result, replace, replace_length, sizeof blocks);
        from = match + matches.length;
    }
    const std::size_t rest = distance(from, end) + 1;
    if (result.text == nullptr && !allocate(result, rest)) {
        return nullptr;
    }
    append(result, from, rest, 0);
    shrinkArray(result.text, result.length);
    return take(result.text);
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
