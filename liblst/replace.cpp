#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/format.h"
#include "liblst/grow.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"

#include <algorithm>
#include <cstring>

namespace {

// A short piece is copied as a block of this size: a call for each takes longer than finding it.
constexpr std::size_t BLOCK = 16;

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

/** Makes room for `length` more bytes, and the block behind them; false with ENOMEM. */
bool reserve(Result& result, std::size_t length)
{
    const std::size_t needed = result.length + length + BLOCK;
    return (result.text != nullptr && needed <= result.capacity) ||
           growArray(result.text, result.capacity, needed);
}

/** Appends a piece, for which there is room; from its begin on `readable` bytes may be read. */
void append(Result& result, const char* piece, std::size_t length, std::size_t readable)
{
    const bool as_block = length <= BLOCK && readable >= BLOCK;
    char* to = result.text + result.length;
    as_block ? std::memcpy(to, piece, BLOCK) : std::memcpy(to, piece, length);
    result.length += length;
}

/** The first `search` in [string, end), or null; quicker than strstr() where matches are dense. */
const char* findNext(const char* string, const char* end, const char* search, std::size_t length)
{
    for (;; ++string) {
        string = static_cast<const char*>(
            std::memchr(string, *search, static_cast<std::size_t>(end - string))
        );
        if (string == nullptr || std::strncmp(string, search, length) == 0) {
            return string;
        }
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
    const std::size_t search_length = std::strlen(search);
    const std::size_t replace_length = std::strlen(replace);
    const char* const end = string + std::strlen(string);
    char block[BLOCK] = {};
    if (replace_length <= BLOCK) {
        replace = std::copy_n(replace, replace_length, block) - replace_length;
    }

    __attribute__((cleanup(releaseResult))) Result result = {};
    const char* from = string;
    while (const char* match = findNext(from, end, search, search_length)) {
        // With all that follows, so that the result grows only where it gets longer.
        if (!reserve(result, static_cast<std::size_t>(end - from) + replace_length)) {
            return nullptr;
        }
        append(
            result, from, static_cast<std::size_t>(match - from),
            static_cast<std::size_t>(end - from)
        );
        append(result, replace, replace_length, BLOCK);
        from = match + search_length;
    }
    const std::size_t rest = static_cast<std::size_t>(end - from);
    if (!reserve(result, rest + 1)) {
        return nullptr; // GCOV_EXCL_LINE: no memory for the rest alone
    }
    append(result, from, rest + 1, 0);
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
