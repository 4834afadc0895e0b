#include "syscmd/commands/account_group.h"

#include "common/common.h"
#include "common/io.h"
#include "common/isowner.h"
#include "liblst/owned.h"
#include "liblst/whole_file.h"

#include <cstring>

namespace {

char* readOwnerFile(const char* begin, const char* end)
{
    AUTO_FREE char* content = nullptr;
    char* value = nullptr;
    return readFile(&content, OWNER_FILE, OnReadError::Keep) == SUCCESS &&
                   CutStr(&value, content, begin, end) == SUCCESS
               ? value
               : nullptr;
}

} // namespace

char* GetSSOOwner()
{
    return readOwnerFile("<owner>", "</owner>");
}

char* GetP2POwner()
{
    return readOwnerFile("<p2powner>", "</p2powner>");
}

const char* getGroupByUsername(const char* username, int* isowner)
{
    AUTO_FREE char* owner = GetSSOOwner();
    *isowner = owner != nullptr && username != nullptr && strcmp(owner, username) == 0 ? 1 : 0;
    return *isowner == 1 ? "admin" : SKYHOLD_GROUP;
}
