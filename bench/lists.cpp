// Lists: splitting and pushing.
#include "bench/families.h"
#include "bench/growth.h"

#include <string>

namespace {

std::string fields(std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += (i == 0 ? "field" : ",field") + std::to_string(i);
    }
    return text;
}

/** The floor: every byte is looked at once, by memchr, and a field is one exact allocation. */
List splitBarely(char splitter, const std::string& text)
{
    std::size_t size = 0;
    std::size_t capacity = 16;
    char** items = static_cast<char**>(std::malloc(capacity * sizeof(char*)));
    const char* const end = text.data() + text.size();
    for (const char* field = text.data(); field < end;) {
        const void* mark = std::memchr(field, splitter, static_cast<std::size_t>(end - field));
        const char* stop = mark != nullptr ? static_cast<const char*>(mark) : end;
        const auto length = static_cast<std::size_t>(stop - field);
        if (size + 1 == capacity) {
            capacity *= 2;
            items = static_cast<char**>(std::realloc(items, capacity * sizeof(char*)));
        }
        char* copy = static_cast<char*>(std::malloc(length + 1));
        std::memcpy(copy, field, length);
        copy[length] = '\0';
        items[size++] = copy;
        field = stop + 1;
    }
    items[size] = nullptr;
    return List(static_cast<char**>(std::realloc(items, (size + 1) * sizeof(char*))));
}

List pushed(std::size_t count, ssize_t push(char***, const char*))
{
    char** list = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
        push(&list, "element");
    }
    return List(list);
}

/** The floor of lstPush(), whose list has no room to spare: find the end, grow by one. */
ssize_t pushBarely(char*** list, const char* text)
{
    std::size_t size = 0;
    while (*list != nullptr && (*list)[size] != nullptr) {
        ++size;
    }
    *list = static_cast<char**>(std::realloc(*list, (size + 2) * sizeof(char*)));
    (*list)[size] = strdup(text);
    (*list)[size + 1] = nullptr;
    return static_cast<ssize_t>(size);
}

/** A map of so many entries. */
List mapOf(std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        ((text += "key" + number) += ",value") += number + ",";
    }
    return List(lstSplitStr(',', text.c_str()));
}

/** The floor of getMapValue(): the keys one after the other. */
const char* findBarely(const List& map, const char* key)
{
    char** entry = map.get();
    while (*entry != nullptr && std::strcmp(*entry, key) != 0) {
        entry += 2;
    }
    return *entry == nullptr ? nullptr : entry[1];
}

} // namespace

void benchLists(Frame& frame)
{
    const std::string text = fields(100000);
    const auto ours = [&] {
        return List(lstSplitStr(',', text.c_str()));
    };
    const char* name = "lstSplitStr, 100,000 fields";
    frame.compare(
        {.name = name, .against = "memchr, an allocation a field", .goal = 1.05, .keep = true},
        ours, [&] { return splitBarely(',', text); }
    );
    frame.compare({.name = name, .against = "g_strsplit", .goal = 0.7, .keep = true}, ours, [&] {
        return StringVector(g_strsplit(text.c_str(), ",", -1));
    });
    frame.grows(name, 50000, [](std::size_t size) {
        return [text = fields(size)] {
            List(lstSplitStr(',', text.c_str()));
        };
    });
    frame.compare(
        {.name = "lstPush, 1,000 elements", .against = "find the end, realloc"},
        [] { return pushed(1000, lstPush); }, [] { return pushed(1000, pushBarely); }
    );
    frame.compare(
        {.name = "lstPush, 20,000 elements", .against = "find the end, realloc", .goal = 0.7},
        [] { return pushed(20000, lstPush); }, [] { return pushed(20000, pushBarely); }
    );
}

void growLists(Growth& growth)
{
    growth.measure(
        "list-push", {10, 30, 100, 300, 1000, 3000, 10000, 30000},
        [](std::size_t count) {
            return Curves{
                curveOf("lstPush", [count] { return pushed(count, lstPush); }),
                curveOf(
                    "floor: find the end, realloc", [count] { return pushed(count, pushBarely); }
                ),
                curveOf("g_ptr_array_add", [count] {
                    GPtrArray* const array = g_ptr_array_new();
                    for (std::size_t i = 0; i < count; ++i) {
                        g_ptr_array_add(array, strdup("element"));
                    }
                    g_ptr_array_add(array, nullptr);
                    return List(reinterpret_cast<char**>(g_ptr_array_free(array, FALSE)));
                })};
        }
    );
    growth.measure("list-split", {10, 100, 1000, 10000, 100000, 1000000}, [](std::size_t count) {
        const auto text = std::make_shared<std::string>(fields(count));
        return Curves{
            curveOf("lstSplitStr", [text] { return List(lstSplitStr(',', text->c_str())); }),
            curveOf(
                "floor: memchr, an allocation a field", [text] { return splitBarely(',', *text); }
            ),
            curveOf("g_strsplit", [text] {
                return StringVector(g_strsplit(text->c_str(), ",", -1));
            })};
    });
    growth.measure(
        "look-up", {10, 30, 100, 300, 1000, 3000, 10000, 30000, 100000},
        [](std::size_t count) {
            const std::shared_ptr<List> map = std::make_shared<List>(mapOf(count));
            const std::shared_ptr<GHashTable> table(
                g_hash_table_new(g_str_hash, g_str_equal), g_hash_table_unref
            );
            for (char** entry = map->get(); *entry != nullptr; entry += 2) {
                g_hash_table_insert(table.get(), entry[0], entry[1]);
            }
            const std::string key = "key" + std::to_string(count - 1);
            return Curves{
                curveOf("getMapValue", [=] { return getMapValue(map->get(), key.c_str()); }),
                curveOf(
                    "floor: strcmp, entry by entry", [=] { return findBarely(*map, key.c_str()); }
                ),
                curveOf("g_hash_table_lookup", [=] {
                    return g_hash_table_lookup(table.get(), key.c_str());
                })};
        }
    );
}
