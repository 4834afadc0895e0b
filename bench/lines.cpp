// The line reader, whose reads of 512 bytes and pending text are its contract.
#include "bench/families.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

/** What a whole file of lines came to: their count and a sum over their bytes. */
struct Rows {
    std::size_t count = 0;
    std::size_t sum = 0;
    bool operator==(const Rows&) const = default;

    void add(const char* row, std::size_t length)
    {
        ++count;
        sum = sum * 31 + length + static_cast<unsigned char>(row[length / 2]);
    }
};

/** A file of so many lines; removed at its end. */
struct LineFile {
    std::string path;

    explicit LineFile(std::size_t count) : path("/opt/lines" + std::to_string(count))
    {
        FILE* file = std::fopen(path.c_str(), "we");
        for (std::size_t i = 0; i < count; ++i) {
            std::fprintf(file, "line %zu of a log\r\n", i);
        }
        std::fclose(file);
    }
    LineFile(const LineFile&) = delete;
    LineFile& operator=(const LineFile&) = delete;
    ~LineFile() { unlink(path.c_str()); }

    int read() const { return open(path.c_str(), O_RDONLY | O_CLOEXEC); }
};

Rows readOurs(const LineFile& file)
{
    Rows rows;
    const int fd = file.read();
    char* row = nullptr;
    while (readFileRow(&row, fd) > 0) {
        const Text owned(row);
        rows.add(row, std::strlen(row));
    }
    close(fd);
    return rows;
}

/** Drops the lines that equal the first `length` bytes of a row from what follows it; returns the
 * new end. */
char* dropEquals(const char* row, std::size_t length, char* end)
{
    char* line = const_cast<char*>(row) + length;
    while (char* feed =
               static_cast<char*>(std::memchr(line, '\n', static_cast<std::size_t>(end - line)))) {
        char* const next = feed + 1;
        if (static_cast<std::size_t>(next - line) == length &&
            std::memcmp(line, row, length) == 0) {
            std::memmove(line, next, static_cast<std::size_t>(end - next));
            end -= length;
        } else {
            line = next;
        }
    }
    return end;
}

/**
 * The floor: reads of 512 bytes; of each line an owned copy without its line ends; and its equals
 * that are pending dropped, line by line. Text is pending for two chunks at most: the lines are
 * short.
 */
Rows readBarely(const LineFile& file)
{
    Rows rows;
    const int fd = file.read();
    char pending[2048];
    std::size_t size = 0;
    for (ssize_t got = 0; (got = read(fd, pending + size, 512)) > 0;) {
        size += strnlen(pending + size, static_cast<std::size_t>(got));
        char* row = pending;
        char* end = pending + size;
        while (char* feed =
                   static_cast<char*>(std::memchr(row, '\n', static_cast<std::size_t>(end - row)))
        ) {
            const auto length = static_cast<std::size_t>(feed + 1 - row);
            const Text copy(static_cast<char*>(std::malloc(length + 1)));
            char* to = copy.get();
            for (const char* from = row; from != feed; ++from) {
                *to = *from;
                to += *from != '\r' ? 1 : 0;
            }
            *to = '\0';
            rows.add(copy.get(), static_cast<std::size_t>(to - copy.get()));
            end = dropEquals(row, length, end);
            row = feed + 1;
        }
        size = static_cast<std::size_t>(end - row);
        std::memmove(pending, row, size);
    }
    close(fd);
    return rows;
}

} // namespace

void benchLines(Frame& frame)
{
    const char* name = "readFileRow, 100,000 lines";
    if (!frame.wants(name)) {
        return;
    }
    const LineFile file(100000);
    frame.compare(
        {.name = name, .against = "reads of 512 bytes", .goal = 1.1},
        [&] { return readOurs(file); }, [&] { return readBarely(file); }
    );
    frame.grows(name, 20000, [](std::size_t count) {
        return [kept = std::make_shared<LineFile>(count)] {
            readOurs(*kept);
        };
    });
}
