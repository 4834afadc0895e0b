/** What cases return: owned, so that releasing it is part of the work, and comparable. */
#pragma once

#include "liblst/liblst.h"

#include <glib.h>

#include <cstdlib>
#include <cstring>
#include <memory>

struct Free {
    void operator()(void* pointer) const { std::free(pointer); }
};
struct FreeList {
    void operator()(char** list) const { lstFree(list); }
};
struct FreeGList {
    void operator()(char** list) const { g_strfreev(list); }
};

using Text = std::unique_ptr<char, Free>;
using List = std::unique_ptr<char*, FreeList>;
using StringVector = std::unique_ptr<char*, FreeGList>;

template<typename Value>
requires(!requires(Value value) { value.get(); }) bool same(const Value& one, const Value& other)
{
    return one == other;
}

inline bool same(const Text& one, const Text& other)
{
    return one != nullptr && other != nullptr && std::strcmp(one.get(), other.get()) == 0;
}

/** Lists are equal in every element, whoever made them. */
template<typename OneFree, typename OtherFree>
bool same(
    const std::unique_ptr<char*, OneFree>& one, const std::unique_ptr<char*, OtherFree>& other
)
{
    if (one == nullptr || other == nullptr) {
        return false;
    }
    char** mine = one.get();
    char** theirs = other.get();
    while (*mine != nullptr && *theirs != nullptr && std::strcmp(*mine, *theirs) == 0) {
        ++mine;
        ++theirs;
    }
    return *mine == nullptr && *theirs == nullptr;
}
