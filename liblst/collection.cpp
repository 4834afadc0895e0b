#include "liblst/export.h"
#include "liblst/liblst.h"

#include <cerrno>
#include <cstdlib>

EXPORTED void pCollect(void*** pc, void* ptr)
{
    if (pc == nullptr || ptr == nullptr) {
        errno = EINVAL;
        return;
    }
    std::size_t count = 0;
    while (*pc != nullptr && (*pc)[count] != nullptr) {
        ++count;
    }
    void** grown = static_cast<void**>(std::realloc(*pc, (count + 2) * sizeof(void*)));
    if (grown == nullptr) {
        return;
    }
    grown[count] = ptr;
    grown[count + 1] = nullptr;
    *pc = grown;
}

EXPORTED void pClean(void** pc)
{
    for (void** item = pc; item != nullptr && *item != nullptr; ++item) {
        std::free(*item);
    }
    std::free(pc);
}
