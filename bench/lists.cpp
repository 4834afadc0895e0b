// Lists: splitting and pushing.
#include "bench/families.h"

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
