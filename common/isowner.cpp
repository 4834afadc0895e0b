#include "common/isowner.h"

#include "common/common.h"
#include "common/cut.h"
#include "common/device/accounts.h"
#include "common/io.h"
#include "common/mxl/format_template.h"
#include "common/owned_text.h"
#include "liblst/liblst.h"
#include "liblst/whole_file.h"

#include <grp.h>
#include <strings.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

const char* const SKYHOLD_GROUP = "sky-hold";

namespace {

bool sameIgnoringCase(std::string_view name, const char* user)
{
    return name.size() == strlen(user) && strncasecmp(name.data(), user, name.size()) == 0;
}

/** A buffer for group look-ups; `text` is the owner's to release. */
struct GroupBuffer {
    char* text;
    std::size_t size;
};

int grow(GroupBuffer* buffer)
{
    const std::size_t size = buffer->size + LOOK_UP_BUFFER_STEP;
    auto* text = static_cast<char*>(realloc(buffer->text, size));
    if (text == nullptr) {
        return -1; // GCOV_EXCL_LINE: no memory for a large group
    }
    *buffer = {text, size};
    return SUCCESS;
}

void releaseGroupBuffer(GroupBuffer* buffer)
{
    free(buffer->text);
}

/**
 * Runs one look-up, again with a larger buffer as long as the entry does not fit.
 *
 * @param look_up  getgrgid_r or getgrnam_r with its key; its arguments are those behind the key
 * @return 0 with `*found` set (null: no such group), -1 when the look-up failed
 */
template<typename LookUp>
int findGroup(LookUp look_up, GroupBuffer* buffer, group* entry, group** found)
{
    int error = 0;
    while ((error = look_up(entry, buffer->text, buffer->size, found)) == ERANGE) {
        if (grow(buffer) != SUCCESS) {
            return -1; // GCOV_EXCL_LINE: no memory for a large group
        }
    }
    return error == 0 ? SUCCESS : -1;
}

bool isListed(const group& entry, const char* name)
{
    for (char** member = entry.gr_mem; *member != nullptr; ++member) {
        if (strcmp(*member, name) == 0) {
            return true;
        }
    }
    return false;
}

/** Whether user `name`, whose primary group is `primary`, belongs to `group_name`. */
bool isMember(const char* name, gid_t primary, const char* group_name)
{
    const std::size_t size = lookUpBufferSize(_SC_GETGR_R_SIZE_MAX);
    [[gnu::cleanup(releaseGroupBuffer)]] GroupBuffer buffer = {
        static_cast<char*>(malloc(size)), size};
    if (buffer.text == nullptr) {
        return false;
    }

    group entry = {};
    group* found = nullptr;
    const auto by_id = [primary](auto... rest) {
        return getgrgid_r(primary, rest...);
    };
    if (findGroup(by_id, &buffer, &entry, &found) != SUCCESS) {
        return false;
    }
    if (found != nullptr && strcmp(found->gr_name, group_name) == 0) {
        return true;
    }

    const auto by_name = [group_name](auto... rest) {
        return getgrnam_r(group_name, rest...);
    };
    return findGroup(by_name, &buffer, &entry, &found) == SUCCESS && found != nullptr &&
           isListed(*found, name);
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
    const std::string_view owner = cut(file, "<owner>", "</owner>");
    return sameIgnoringCase(owner.substr(0, MAX_USERNAME_LENGTH), user) ||
           sameIgnoringCase(cut(file, "<p2powner>", "</p2powner>"), user);
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

int isLocked(const char* user, char** name)
{
    if (user == nullptr || name == nullptr) {
        return 1;
    }

    AUTO_FREE char* request = FORMAT_TEMPLATE(GET_USER_DATA_MXL, "", user, "");
    if (request == nullptr) {
        return 1;
    }
    AUTO_FREE char* reply = nullptr;
    if (deliver(&reply, request) != Delivery::Answered) {
        return 1;
    }

    if (CutStr(name, reply, "<User_Name><![CDATA[", "]]></User_Name>") != SUCCESS) {
        return 1;
    }
    // The flag ends where its digits do, so it needs no copy. Not narrowed: a flag whose low 32
    // bits are zero is a locked one too.
    return strtol(cut(reply, "<IsLocked>", "</IsLocked>").data(), nullptr, 10) != 0;
}
