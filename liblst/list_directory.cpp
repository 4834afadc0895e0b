#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"
#include "liblst/list_builder.h"
#include "liblst/owned.h"
#include "liblst/retry.h"

#include <dirent.h>

#include <cstring>

namespace {

/**
 * The next entry; null with errno 0 behind the last one. Not by readdir_r(), which fails on names
 * of more than 255 bytes; readdir() is as re-entrant as long as each caller has its own
 * `directory`.
 */
const dirent* nextEntry(DIR* directory)
{
    return withoutInterruption([directory] {
        errno = 0;
        return readdir(directory);
    });
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
    AUTO_CLOSE_DIR DIR* directory = withoutInterruption([path] { return opendir(path); });
    if (directory == nullptr) {
        return nullptr;
    }
    AUTO_RELEASE_LIST ListBuilder names = {};
    const int error = errno;
    while (const dirent* entry = nextEntry(directory)) {
        if (!isDots(entry->d_name) &&
            !appendCopy(names, entry->d_name, std::strlen(entry->d_name))) {
            return nullptr;
        }
    }
    if (errno != 0) {
        return nullptr;
    }
    errno = error;
    return finishList(names);
}
