/**
 * A list in the making. It knows its size, so that appending neither searches for the end nor
 * reallocates each time, as lstPush() must.
 *
 *     AUTO_RELEASE_LIST ListBuilder names = {};
 *     if (!appendCopy(names, text, length)) { return nullptr; }
 *     return finishList(names);
 */
#pragma once

#include <cstddef>

/** Releases a list that was not finished at the end of the scope. */
#define AUTO_RELEASE_LIST __attribute__((cleanup(releaseList)))

struct ListBuilder {
    char** items;
    std::size_t size;
    std::size_t capacity;
};

/** Appends a copy of `length` bytes of text; false, and the list unchanged, with ENOMEM. */
bool appendCopy(ListBuilder& list, const char* text, std::size_t length);

/** Hands the list over, null-terminated; null when it is empty. */
char** finishList(ListBuilder& list);

/** The cleanup of AUTO_RELEASE_LIST. */
void releaseList(ListBuilder* list);
