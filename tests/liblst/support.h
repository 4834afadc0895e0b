/** What the tests of the utility library share. */
#pragma once

#include "liblst/liblst.h"

#include <unistd.h>

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

/** A file with this content, for as long as it lives. */
struct TempFile {
    explicit TempFile(const std::string& content) : fd(mkstemp(path))
    {
        writeToFileFormat(fd, "%s", content.c_str());
        lseek(fd, 0, SEEK_SET);
    }
    TempFile(const TempFile&) = delete;
    ~TempFile()
    {
        close(fd);
        unlink(path);
    }

    char path[20] = "/tmp/liblst.XXXXXX";
    int fd; /**< open for reading and writing, at the beginning */
};
