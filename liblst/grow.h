/** Heap arrays that grow geometrically, so that filling one costs time linear in its size. */
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>

/**
 * Doubles an array's room, or more.
 *
 * @param items     the array, from malloc(); null while it has no room
 * @param capacity  its room in elements
 * @param at_least  the room that it needs
 * @return false, with ENOMEM and the array as it was, when memory runs out
 */
template<typename T> bool growArray(T*& items, std::size_t& capacity, std::size_t at_least)
{
    const std::size_t wanted = std::max(capacity * 2, at_least);
    T* grown = static_cast<T*>(std::realloc(items, wanted * sizeof(T)));
    if (grown == nullptr) {
        return false;
    }
    items = grown;
    capacity = wanted;
    return true;
}

/**
 * Gives back the room behind the first `size` elements, of which there is at least one; an array
 * that cannot be shrunk stays as it is.
 */
template<typename T> void shrinkArray(T*& items, std::size_t size)
{
    T* exact = static_cast<T*>(std::realloc(items, size * sizeof(T)));
    items = exact != nullptr ? exact : items;
}
