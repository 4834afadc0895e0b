#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"
#include "liblst/list_builder.h"
#include "liblst/owned.h"

#include <cstring>

namespace {

/** Appends the entry of a line, which is edited; false with ENOMEM. */
bool appendEntry(ListBuilder& map, char* line)
{
    delGaps(line);
    const char* equals = std::strchr(line, '=');
    const bool is_entry = equals != nullptr && equals != line && equals[1] != '\0' && *line != '#';
    if (!is_entry) {
        return true;
    }
    const char* value = equals + 1;
    return appendCopy(map, line, static_cast<std::size_t>(equals - line)) &&
           appendCopy(map, value, std::strlen(value));
}

} // namespace

EXPORTED char** readConfig(const char* path)
{
    if (path == nullptr) {
        return badArgument<char**>(nullptr);
    }
    AUTO_FREE char* text = nullptr;
    if (getFileContentFormat(&text, "%s", path) != 0) {
        return nullptr;
    }
    AUTO_RELEASE_LIST ListBuilder map = {};
    for (char* line = text; line != nullptr;) {
        char* end = std::strchr(line, '\n');
        if (end != nullptr) {
            *end++ = '\0';
        }
        if (!appendEntry(map, line)) {
            return nullptr;
        }
        line = end;
    }
    return finishList(map);
}

EXPORTED const char* getConfigValue(char** map, const char* key, const char* dval)
{
    const int error = errno;
    const char* value = getMapValue(map, key);
    errno = error; // a map or key that is missing is no error here
    return value != nullptr ? value : dval;
}
