#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/format.h"
#include "liblst/grow.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "liblst/retry.h"

#include <fcntl.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t CHUNK = 512;

/** Text that was read and not yet returned: [begin, end) of `text`. */
struct Pending {
    char* text;
    std::size_t begin;
    std::size_t end;
    std::size_t capacity;
};

// One for the process, whatever descriptor is read: what one file leaves comes first in the next.
Pending pending = {};

void releasePending()
{
    std::free(pending.text);
    pending = {};
}

/** Makes room for one more chunk behind the pending text; false with ENOMEM. */
bool reserveChunk()
{
    if (pending.begin > 0) {
        pending.end -= pending.begin;
        std::memmove(pending.text, pending.text + pending.begin, pending.end);
        pending.begin = 0;
    }
    return pending.capacity - pending.end >= CHUNK ||
           growArray(pending.text, pending.capacity, CHUNK);
}

/** Appends a chunk to the pending text, for which there is room; returns what read() does. */
ssize_t readChunk(int fd)
{
    char* chunk = pending.text + pending.end;
    const ssize_t got = withoutInterruption([=] { return read(fd, chunk, CHUNK); });
    if (got > 0) { // a chunk is a C string: what stands behind a NUL is no text
        pending.end += strnlen(chunk, static_cast<std::size_t>(got));
    }
    return got;
}

/** The first `wanted` in [text, end), or null. */
const char* find(char wanted, const char* text, const char* end)
{
    return text != end ? static_cast<const char*>(
                             std::memchr(text, wanted, static_cast<std::size_t>(end - text))
                         )
                       : nullptr;
}

/** Stores the first `length` pending bytes, in which a line feed is the last at most, without line
 * ends; returns what readFileRow() does. */
ssize_t copyRow(char** data, std::size_t length)
{
    char* row = static_cast<char*>(std::malloc(length + 1));
    if (row == nullptr) {
        return -1;
    }
    const char* text = pending.text + pending.begin;
    const char* end = text + length - (text[length - 1] == '\n' ? 1 : 0);
    char* to = row;
    while (const char* carriage_return = find('\r', text, end)) {
        to = std::copy(text, carriage_return, to);
        text = carriage_return + 1;
    }
    to = std::copy(text, end, to);
    *to = '\0';
    *data = row;
    return to - row + 1;
}

/** Removes the first `length` pending bytes, a line with its line feed, wherever they occur. */
void dropRow(std::size_t length)
{
    const char* row = pending.text + pending.begin;
    const char* end = pending.text + pending.end;
    const char* from = row + length;
    char* to = pending.text + pending.begin + length;
    // A copy of the line ends with a line feed, like the line: only there it needs looking for.
    for (const char* next = from; const char* feed = find('\n', next, end); next = feed + 1) {
        const char* equal = feed + 1 - length;
        if (equal >= from && std::memcmp(equal, row, length) == 0) {
            to = std::copy(from, equal, to);
            from = feed + 1;
        }
    }
    if (to != from) {
        std::memmove(to, from, static_cast<std::size_t>(end - from));
        pending.end -= static_cast<std::size_t>(from - to);
    }
    pending.begin += length;
}

/**
 * Reads until the pending text holds a whole line.
 *
 * @return that line's length with its line feed; 0 when the input ends before; -1 when a read
 *         fails, and the pending text is released, or when memory runs out
 */
ssize_t awaitRow(int fd)
{
    std::size_t searched = 0;
    for (;;) {
        const char* text = pending.text + pending.begin;
        const char* feed = find('\n', text + searched, pending.text + pending.end);
        if (feed != nullptr) {
            return feed - text + 1;
        }
        searched = pending.end - pending.begin;
        if (!reserveChunk()) {
            return -1;
        }
        const ssize_t got = readChunk(fd);
        if (got < 0) {
            releasePending();
        }
        if (got <= 0) {
            return got;
        }
    }
}

} // namespace

EXPORTED ssize_t readFileRow(char** data, const int fd)
{
    if (data == nullptr) {
        return badArgument<ssize_t>(-1);
    }
    *data = nullptr;
    const ssize_t length = awaitRow(fd);
    if (length < 0) {
        return -1;
    }
    if (length > 0) {
        const ssize_t result = copyRow(data, static_cast<std::size_t>(length));
        if (result > 0) {
            dropRow(static_cast<std::size_t>(length));
        }
        return result;
    }
    if (pending.end == pending.begin) {
        releasePending();
        return 0;
    }
    // The last line has no line end: nothing tells that it is complete, so it stays pending.
    return copyRow(data, pending.end - pending.begin);
}

EXPORTED char* ptGetFileRowFormat(const char* format, ...)
{
    AUTO_FREE char* path = nullptr;
    FORMAT_ARGUMENTS(path, format);
    if (path == nullptr) {
        return nullptr;
    }
    AUTO_CLOSE_FD const int fd = openPatiently(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return nullptr;
    }
    char* row = nullptr;
    readFileRow(&row, fd);
    return row;
}
