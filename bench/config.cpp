// Configuration files.
#include "bench/families.h"
#include "bench/growth.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

constexpr const char* GROUP = "bench";

struct FreeKeyFile {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;

/** A map is equal to a key file that has each of its values. */
bool same(const List& map, const KeyFile& file)
{
    for (char** entry = map.get(); *entry != nullptr; entry += 2) {
        char* value = g_key_file_get_value(file.get(), GROUP, entry[0], nullptr);
        const bool equal = value != nullptr && std::strcmp(value, entry[1]) == 0;
        g_free(value);
        if (!equal) {
            return false;
        }
    }
    return true;
}

/** Writes a file of so many entries and returns its path. The group's line is none of ours: it has
 * no "=". */
std::string writeConfig(std::size_t entries)
{
    const std::string path = "/opt/bench" + std::to_string(entries) + ".conf";
    FILE* file = std::fopen(path.c_str(), "we");
    std::fprintf(file, "[%s]\n", GROUP);
    for (std::size_t i = 0; i < entries; ++i) {
        std::fprintf(file, "some_key_%zu = a-value-%zu\n", i, i);
    }
    std::fclose(file);
    return path;
}

char* copied(const char* text, std::size_t length)
{
    char* copy = static_cast<char*>(std::malloc(length + 1));
    std::memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
}

/** The floor: the file read at once, one pass over its bytes, an exact allocation a text. */
List readBarely(const char* path)
{
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    fstat(fd, &status);
    const Text text(static_cast<char*>(std::malloc(static_cast<std::size_t>(status.st_size) + 1)));
    const ssize_t got = read(fd, text.get(), static_cast<std::size_t>(status.st_size));
    close(fd);
    text.get()[got < 0 ? 0 : got] = '\0';

    std::size_t size = 0;
    std::size_t capacity = 16;
    char** items = static_cast<char**>(std::malloc(capacity * sizeof(char*)));
    char* line = text.get();
    while (*line != '\0') {
        char* from = line;
        char* to = line;
        char* equals = nullptr;
        for (; *from != '\n' && *from != '\0'; ++from) {
            if (*from == '=' && equals == nullptr) {
                equals = to;
            }
            *to = *from;
            to += *from > ' ' ? 1 : 0;
        }
        if (equals != nullptr && equals != line && to - equals > 1 && *line != '#') {
            if (size + 3 > capacity) {
                capacity *= 2;
                items = static_cast<char**>(std::realloc(items, capacity * sizeof(char*)));
            }
            items[size++] = copied(line, static_cast<std::size_t>(equals - line));
            items[size++] = copied(equals + 1, static_cast<std::size_t>(to - equals - 1));
        }
        line = *from == '\0' ? from : from + 1;
    }
    items[size] = nullptr;
    return List(static_cast<char**>(std::realloc(items, (size + 1) * sizeof(char*))));
}

KeyFile readByGlib(const char* path)
{
    KeyFile file(g_key_file_new());
    g_key_file_load_from_file(file.get(), path, G_KEY_FILE_NONE, nullptr);
    return file;
}

} // namespace

void benchConfig(Frame& frame)
{
    const char* name = "readConfig, 5,000 entries";
    if (!frame.wants(name)) {
        return;
    }
    const std::string path = writeConfig(5000);
    const auto ours = [&] {
        return List(readConfig(path.c_str()));
    };
    frame.compare({.name = name, .against = "one pass", .goal = 1.3}, ours, [&] {
        return readBarely(path.c_str());
    });
    frame.compare({.name = name, .against = "GKeyFile, loaded only", .goal = 0.9}, ours, [&] {
        return readByGlib(path.c_str());
    });
    frame.grows(name, 20000, [](std::size_t entries) {
        return [larger = writeConfig(entries)] {
            List(readConfig(larger.c_str()));
        };
    });
}

void growConfig(Growth& growth)
{
    growth.measure(
        "config", {10, 30, 100, 300, 1000, 3000, 10000, 30000, 100000},
        [](std::size_t entries) {
            const std::string path = writeConfig(entries);
            return Curves{
                curveOf("readConfig", [path] { return List(readConfig(path.c_str())); }),
                curveOf("floor: one pass", [path] { return readBarely(path.c_str()); }),
                curveOf("GKeyFile", [path] { return readByGlib(path.c_str()); })};
        }
    );
}
