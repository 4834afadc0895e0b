#include "liblst/characters.h"
#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"
#include "liblst/list_builder.h"
#include "liblst/owned.h"

#include <algorithm>
#include <cstring>

namespace {

/** Appends the entry of the line [line, end), which is edited; false with ENOMEM. */
bool appendEntry(ListBuilder& map, char* line, char* end)
{
    end = std::remove_if(line, end, isBlank);
    const char* equals = std::find(line, end, '=');
    const bool is_entry = equals != line && end - equals > 1 && *line != '#';
    if (!is_entry) {
        return true;
    }
    const char* value = equals + 1;
    return appendCopy(map, line, static_cast<std::size_t>(equals - line)) &&
           appendCopy(map, value, static_cast<std::size_t>(end - value));
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
    for (char* line = text; *line != '\0';) {
        char* end = strchrnul(line, '\n');
        char* next = *end != '\0' ? end + 1 : end;
        if (!appendEntry(map, line, end)) {
            return nullptr;
        }
        line = next;
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
