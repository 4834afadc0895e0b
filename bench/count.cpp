#include "bench/count.h"

#include <atomic>
#include <cstdlib>

namespace {

Allocations counted;
bool counting = false;

void countBlock(std::size_t size)
{
    if (counting) {
        ++counted.calls;
        counted.bytes += size;
        ++counted.left;
    }
}

void countRelease()
{
    counted.left -= counting ? 1 : 0;
}

} // namespace

#if defined(__SANITIZE_ADDRESS__)

// Of the sanitizer's interface, whose header g++ does not come with.
extern "C" int __sanitizer_install_malloc_and_free_hooks(
    void (*on_malloc)(const volatile void*, std::size_t), void (*on_free)(const volatile void*)
);

namespace {

void onMalloc(const volatile void* /*block*/, std::size_t size)
{
    countBlock(size);
}

void onFree(const volatile void* block)
{
    if (block != nullptr) {
        countRelease();
    }
}

const int installed = __sanitizer_install_malloc_and_free_hooks(onMalloc, onFree);

} // namespace

#else

// In the C library's place, for every caller in the process.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size)
{
    countBlock(size);
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    countBlock(count * size);
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size)
{
    if (block != nullptr) {
        countRelease();
    }
    countBlock(size);
    return __libc_realloc(block, size);
}

void free(void* block)
{
    if (block != nullptr) {
        countRelease();
    }
    __libc_free(block);
}
}

#endif

Allocations countAllocations(const std::function<void()>& work)
{
    counted = {};
    counting = true;
    work();
    counting = false;
    return counted;
}
