#include "syscmd/commands/account_group.h"

#include "common/device/owner_file.h"
#include "common/isowner.h"

#include <cstring>

const char* getGroupByUsername(const char* username, int* isowner, char** owner)
{
    *owner = GetSSOOwner();
    *isowner = *owner != nullptr && username != nullptr && strcmp(*owner, username) == 0 ? 1 : 0;
    return *isowner == 1 ? "admin" : SKYHOLD_GROUP;
}
