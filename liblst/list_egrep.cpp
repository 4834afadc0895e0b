#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"
#include "liblst/list_builder.h"

#include <regex.h>

#include <cstring>

namespace {

/** 0 for a match, REG_NOMATCH, or the error of regcomp() or regexec(). */
int matchOnce(const char* regexp, const char* text)
{
    regex_t compiled;
    const int error = regcomp(&compiled, regexp, REG_EXTENDED | REG_NOSUB);
    if (error != 0) {
        return error;
    }
    const int outcome = regexec(&compiled, text, 0, nullptr, 0);
    regfree(&compiled);
    return outcome;
}

} // namespace

EXPORTED char** lstEgrep(const char** lst, const char* regexp)
{
    if (lst == nullptr || regexp == nullptr) {
        return badArgument<char**>(nullptr);
    }
    AUTO_RELEASE_LIST ListBuilder matches = {};
    for (const char** item = lst; *item != nullptr; ++item) {
        const int outcome = matchOnce(regexp, *item);
        if (outcome != 0 && outcome != REG_NOMATCH) {
            errno = outcome == REG_ESPACE ? ENOMEM : EINVAL;
            return nullptr;
        }
        if (outcome == 0 && !appendCopy(matches, *item, std::strlen(*item))) {
            return nullptr;
        }
    }
    return finishList(matches);
}
