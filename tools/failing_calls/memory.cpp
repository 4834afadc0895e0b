// Allocations, by the C library and by operator new.
#include "tools/failing_calls/wrap.h"

#include <cstdint>
#include <new>

OBTAIN("allocation", char*, strdup, (const char* text), (text))
OBTAIN("allocation", char*, strndup, (const char* text, std::size_t size), (text, size))
OBTAIN("allocation", void*, calloc, (std::size_t count, std::size_t size), (count, size))
DECLARE(void*, malloc, (std::size_t size))
{
    // A size of -1 is refused here: AddressSanitizer would end the process.
    return strike("allocation") != 0 || size > PTRDIFF_MAX ? nullptr : counted(__real_malloc(size));
}
DECLARE(void*, realloc, (void* old, std::size_t size))
{
    void* block = strike("allocation") != 0 ? nullptr : __real_realloc(old, size);
    live += old == nullptr && block != nullptr ? 1 : 0;
    return block;
}
DECLARE(void, free, (void* block))
{
    live -= block != nullptr ? 1 : 0;
    __real_free(block);
}
void* operator new(std::size_t size)
{
    void* block = __wrap_malloc(size);
    return block != nullptr ? block : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return __wrap_malloc(size);
}
void* operator new[](std::size_t size)
{
    return operator new(size);
}
void operator delete(void* block) noexcept
{
    __wrap_free(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    __wrap_free(block);
}
void operator delete[](void* block) noexcept
{
    __wrap_free(block);
}
void operator delete[](void* block, std::size_t) noexcept
{
    __wrap_free(block);
}
