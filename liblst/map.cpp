#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"
#include "liblst/list_builder.h"
#include "liblst/owned.h"

#include <cstring>

namespace {

/** A map has a value for every key. */
bool isMap(char** map)
{
    return map != nullptr && lstSize(map) % 2 == 0;
}

/** The first entry from `entry` on whose key is `key`; null when there is none. */
char** findKey(char** entry, const char* key)
{
    while (*entry != nullptr && std::strcmp(*entry, key) != 0) {
        entry += 2;
    }
    return *entry != nullptr ? entry : nullptr;
}

} // namespace

EXPORTED ssize_t mapPush(char*** map, const char* key, const char* value)
{
    if (map == nullptr || key == nullptr || value == nullptr) {
        return badArgument<ssize_t>(-1);
    }
    // One growth for both, after both copies: no failure leaves a key without its value.
    AUTO_FREE char* key_copy = strdup(key);
    AUTO_FREE char* value_copy = strdup(value);
    if (key_copy == nullptr || value_copy == nullptr) {
        return -1;
    }
    const std::size_t size = lstSize(*map);
    char** grown = static_cast<char**>(std::realloc(*map, (size + 3) * sizeof(char*)));
    if (grown == nullptr) {
        return -1;
    }
    grown[size] = take(key_copy);
    grown[size + 1] = take(value_copy);
    grown[size + 2] = nullptr;
    *map = grown;
    return static_cast<ssize_t>(size + 1);
}

EXPORTED const char* getMapValue(char** map, const char* key)
{
    if (key == nullptr || !isMap(map)) {
        return badArgument<const char*>(nullptr);
    }
    char** entry = findKey(map, key);
    return entry != nullptr ? entry[1] : nullptr;
}

EXPORTED char** getMapValues(char** map, const char* key)
{
    if (key == nullptr || !isMap(map)) {
        return badArgument<char**>(nullptr);
    }
    AUTO_RELEASE_LIST ListBuilder values = {};
    for (char** entry = findKey(map, key); entry != nullptr; entry = findKey(entry + 2, key)) {
        if (!appendCopy(values, entry[1], std::strlen(entry[1]))) {
            return nullptr;
        }
    }
    return finishList(values);
}
