#include "liblst/list_builder.h"

#include "liblst/owned.h"

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
