/**
 * A list in the making. It knows its size, so that appending neither searches for the end nor
 * reallocates each time, as lstPush() must.
 *
 *     AUTO_RELEASE_LIST ListBuilder names = {};
 *     if (!appendCopy(names, text, length)) { return nullptr; }
 *     return finishList(names);
 */
#pragma once

#include "liblst/grow.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

/** Releases a list that was not finished at the end of the scope. */
#define AUTO_RELEASE_LIST __attribute__((cleanup(releaseList)))

struct ListBuilder {
    char** items;
    std::size_t size;
    std::size_t capacity;
};

/**
 * Appends a copy of `length` bytes of text. Inline for the sake of splitting, which does little
 * else.
 *
 * @return false, with ENOMEM and the list as it was, when memory runs out
 */
inline bool appendCopy(ListBuilder& list, const char* text, std::size_t length)
{
    constexpr std::size_t FIRST_CAPACITY = 16;
    const bool full = list.size + 1 >= list.capacity; // the terminating null needs room too
    if (full && !growArray(list.items, list.capacity, FIRST_CAPACITY)) {
        return false;
    }
    char* copy = static_cast<char*>(std::malloc(length + 1));
    if (copy == nullptr) {
        return false;
    }
    std::memcpy(copy, text, length);
    copy[length] = '\0';
    list.items[list.size++] = copy;
    return true;
}

/** Hands the list over, null-terminated; null when it is empty. */
char** finishList(ListBuilder& list);

/** The cleanup of AUTO_RELEASE_LIST. */
void releaseList(ListBuilder* list);
