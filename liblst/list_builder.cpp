#include "liblst/list_builder.h"

#include "liblst/grow.h"
#include "liblst/owned.h"

namespace {

constexpr std::size_t FIRST_CAPACITY = 16;

} // namespace

bool appendCopy(ListBuilder& list, const char* text, std::size_t length)
{
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

char** finishList(ListBuilder& list)
{
    if (list.size == 0) {
        return nullptr;
    }
    list.items[list.size] = nullptr;
    shrinkArray(list.items, list.size + 1);
    return take(list.items);
}

void releaseList(ListBuilder* list)
{
    for (std::size_t i = 0; list->items != nullptr && i < list->size; ++i) {
        std::free(list->items[i]);
    }
    std::free(list->items);
}
