#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"
#include "liblst/list_builder.h"
#include "liblst/owned.h"

#include <dirent.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>

namespace {

/** Bytes of an entry whose name is as long as the file system of `path` allows. */
std::size_t entrySize(const char* path)
{
    const long reported = pathconf(path, _PC_NAME_MAX);
    const std::size_t longest = reported > 0 ? static_cast<std::size_t>(reported) : NAME_MAX;
    return std::max(sizeof(dirent), offsetof(dirent, d_name) + longest + 1);
}

/** The next entry, null behind the last one; returns an error number. */
int nextEntry(DIR* directory, dirent* buffer, dirent** entry)
{
// Deprecated for callers whose buffer may be too small for a name; this one is not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    return readdir_r(directory, buffer, entry);
#pragma GCC diagnostic pop
}

bool isDots(const char* name)
{
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

} // namespace

EXPORTED char** lstReadDir(const char* path)
{
    if (path == nullptr) {
        return badArgument<char**>(nullptr);
    }
    AUTO_CLOSE_DIR DIR* directory = opendir(path);
    if (directory == nullptr) {
        return nullptr;
    }
    AUTO_FREE dirent* buffer = static_cast<dirent*>(std::malloc(entrySize(path)));
    if (buffer == nullptr) {
        return nullptr;
    }
    AUTO_RELEASE_LIST ListBuilder names = {};
    dirent* entry = nullptr;
    int error = 0;
    while ((error = nextEntry(directory, buffer, &entry)) == 0 && entry != nullptr) {
        if (!isDots(entry->d_name) &&
            !appendCopy(names, entry->d_name, std::strlen(entry->d_name))) {
            return nullptr;
        }
    }
    if (error != 0) {
        errno = error;
        return nullptr;
    }
    return finishList(names);
}
