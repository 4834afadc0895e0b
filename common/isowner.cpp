#include "common/isowner.h"

#include "common/account_name.h"
#include "common/cut.h"
#include "common/device/accounts.h"
#include "common/device/owner_file.h"
#include "common/device/owner_names.h"
#include "common/mxl/reply.h"
#include "common/mxl/transport.h"
#include "common/mxl_templates.h"
#include "common/result.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "liblst/whole_file.h"

#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

const char* const SKYHOLD_GROUP = "sky-hold";

namespace {

bool sameIgnoringCase(std::string_view name, const char* user)
{
    return name.size() == strlen(user) && strncasecmp(name.data(), user, name.size()) == 0;
}

} // namespace

int isOwner(const char* user)
{
    if (user == nullptr) {
        return 0;
    }

    AUTO_FREE char* file = nullptr;
    if (readFile(&file, OWNER_FILE, OnReadError::Release) != SUCCESS) {
        return 0;
    }
    return sameIgnoringCase(ownerIn(file).substr(0, MAX_USERNAME_LENGTH), user) ||
           sameIgnoringCase(p2pOwnerIn(file), user);
}

int isUserInGroup(const char* user, const char* group)
{
    if (user == nullptr || group == nullptr) {
        return 0;
    }

    AUTO_FREE char* name = nullptr;
    if (isLocked(user, &name) != 0) {
        return 0;
    }
    UserNumbers numbers = {};
    if (findUser(name, &numbers) != SUCCESS) {
        return 0;
    }
    return isMember(name, numbers.group, group);
}

long isLocked(const char* user, char** name)
{
    if (user == nullptr || name == nullptr) {
        return 1;
    }

    AUTO_FREE char* request = String(GET_USER_DATA_MXL_TEXT, "", user, "");
    if (request == nullptr) {
        return 1;
    }
    AUTO_FREE char* reply = nullptr;
    if (deliver(&reply, request) != Delivery::Answered) {
        reply = nullptr; // whatever the library left there is not ours to release
        return 1;
    }
    if (CutStr(name, reply, "<User_Name><![CDATA[", "]]></User_Name>") != SUCCESS) {
        return 1;
    }
    // The flag ends where its digits do, so it needs no copy.
    return strtol(cut(reply, "<IsLocked>", "</IsLocked>").data(), nullptr, 10);
}
