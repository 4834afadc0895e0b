/** Clearing what must not stay in memory, in a way that no compiler removes. */
#pragma once

#include <cstring>

/** Overwrites an object with zeros; inlined, so that a small one costs a few stores. */
template<typename T> void clearSecret(T& object)
{
    std::memset(&object, 0, sizeof object);
    // The compiler must take it that this reads the object, and anything else in memory.
    __asm__ __volatile__("" : : "r"(&object) : "memory");
}
