#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"
#include "liblst/list_builder.h"
#include "liblst/owned.h"

#include <cstring>

EXPORTED ssize_t lstPush(char*** lst, const char* str)
{
    if (lst == nullptr || str == nullptr) {
        return badArgument<ssize_t>(-1);
    }
    AUTO_FREE char* copy = strdup(str);
    if (copy == nullptr) {
        return -1;
    }
    const std::size_t size = lstSize(*lst);
    char** grown = static_cast<char**>(std::realloc(*lst, (size + 2) * sizeof(char*)));
    if (grown == nullptr) {
        return -1;
    }
    grown[size] = take(copy);
    grown[size + 1] = nullptr;
    *lst = grown;
    return static_cast<ssize_t>(size);
}

EXPORTED size_t lstSize(char** lst)
{
    if (lst == nullptr) {
        return 0;
    }
    char** end = lst;
    // By fours: a list has no size, and most of what a push to a long one takes is this.
    while (end[0] != nullptr && end[1] != nullptr && end[2] != nullptr && end[3] != nullptr) {
        end += 4;
    }
    while (*end != nullptr) {
        ++end;
    }
    return static_cast<std::size_t>(end - lst);
}

EXPORTED void lstFree(char** lst)
{
    for (char** item = lst; item != nullptr && *item != nullptr; ++item) {
        std::free(*item);
    }
    std::free(lst);
}

EXPORTED char** lstSplitStr(const char splitter, const char* s)
{
    if (s == nullptr) {
        return badArgument<char**>(nullptr);
    }
    AUTO_RELEASE_LIST ListBuilder fields = {};
    const char* const end = s + std::strlen(s);
    for (const char* field = s; field < end;) {
        const std::size_t rest = static_cast<std::size_t>(end - field);
        const void* mark = std::memchr(field, splitter, rest);
        const char* stop = mark != nullptr ? static_cast<const char*>(mark) : end;
        if (stop != field && !appendCopy(fields, field, static_cast<std::size_t>(stop - field))) {
            return nullptr;
        }
        field = stop + 1;
    }
    return finishList(fields);
}
