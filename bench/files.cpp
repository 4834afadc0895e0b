// Whole files, by the path and by a pipe.
#include "bench/families.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

constexpr const char* PATH = "/opt/bench.dat";

void writeFile(const std::string& content)
{
    FILE* file = std::fopen(PATH, "we");
    std::fwrite(content.data(), 1, content.size(), file);
    std::fclose(file);
}

/** The floor: the size by fstat, one allocation, one read. */
Text readBarely()
{
    const int fd = open(PATH, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    fstat(fd, &status);
    const auto size = static_cast<std::size_t>(status.st_size);
    char* text = static_cast<char*>(std::malloc(size + 1));
    const ssize_t got = read(fd, text, size);
    close(fd);
    text[got < 0 ? 0 : got] = '\0';
    return Text(text);
}

/** GLib allocates by malloc(). */
Text readByGlib()
{
    char* text = nullptr;
    g_file_get_contents(PATH, &text, nullptr, nullptr);
    return Text(text);
}

Text readOurs()
{
    char* text = nullptr;
    getFileContentFormat(&text, "%s", PATH);
    return Text(text);
}

void benchSize(Frame& frame, const char* name, std::size_t size, double goal)
{
    if (!frame.wants(name)) {
        return;
    }
    writeFile(std::string(size, 'x'));
    const std::size_t rounds = size > (std::size_t{16} << 20) ? 15 : 0;
    frame.compare(
        {.name = name, .against = "fstat, read", .goal = goal, .rounds = rounds}, readOurs,
        readBarely
    );
    frame.compare(
        {.name = name, .against = "g_file_get_contents", .goal = goal, .rounds = rounds}, readOurs,
        readByGlib
    );
    unlink(PATH);
}

/** What no size is known of is read whole too. */
void checkPipe(Frame& frame)
{
    int ends[2] = {};
    const std::string sent(60000, 'p'); // less than a pipe holds
    if (pipe2(ends, O_CLOEXEC) != 0 || write(ends[1], sent.data(), sent.size()) < 0) {
        frame.fail("no pipe");
        return;
    }
    close(ends[1]);
    const Text got(ptGetFileContent(ends[0]));
    close(ends[0]);
    if (got == nullptr || got.get() != sent) {
        frame.fail("whole file: a pipe was not read to its end");
    }
}

} // namespace

void benchFiles(Frame& frame)
{
    benchSize(frame, "whole file, 1 KiB", std::size_t{1} << 10, 1.15);
    benchSize(frame, "whole file, 1 MiB", std::size_t{1} << 20, 1.05);
    benchSize(frame, "whole file, 64 MiB", std::size_t{64} << 20, 1.05);
    checkPipe(frame);
}
