/** Counting what does not depend on the machine: allocations and system calls. */
#pragma once

#include <cstddef>
#include <functional>

/** The allocations of one piece of work. */
struct Allocations {
    std::size_t calls = 0; // of malloc, calloc, realloc
    std::size_t bytes = 0; // that they asked for
    long left = 0;         // blocks that were not released
};

/** Counts the allocations of everything that runs in the process meanwhile. */
Allocations countAllocations(const std::function<void()>& work);

/** Counts the system calls of work, in a child that is traced; without those by which memory is
 * got. The work is done twice beforehand, so that nothing is done for the first time. Below 0:
 * cannot be traced here. */
long countSystemCalls(const std::function<void()>& work);
