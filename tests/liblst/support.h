/** What the tests of the utility library share. */
#pragma once

#include "liblst/liblst.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using Items = std::vector<std::string>;

/** The list's elements; the list is released. */
inline Items items(char** list)
{
    Items result(list, list + lstSize(list));
    lstFree(list);
    return result;
}

/** The string, or "(null)"; it is released. */
inline std::string text(char* string)
{
    std::string result = string != nullptr ? string : "(null)";
    std::free(string);
    return result;
}

/** A file with this content. It lives in memory: whatever ends the process, nothing is left. */
struct TempFile {
    explicit TempFile(const std::string& content) : fd(memfd_create("liblst", MFD_CLOEXEC))
    {
        std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
        if (pwrite(fd, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) {
            std::abort();
        }
    }
    TempFile(const TempFile&) = delete;
    ~TempFile() { close(fd); }

    char path[32];
    int fd; /**< open for reading and writing, at the beginning */
};
