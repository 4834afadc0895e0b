#include "common/device/accounts.h"

#include "common/log.h"
#include "common/result.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

/** Bytes of a look-up buffer where the system reports 0, and the step by which one grows. */
constexpr std::size_t LOOK_UP_BUFFER_STEP = 16384;

/** Bytes that the system reports for look-ups of kind `sysconf_name` (_SC_GETPW_R_SIZE_MAX or
 * _SC_GETGR_R_SIZE_MAX). A size of -1 ("no limit") comes through as the largest size, which no
 * allocation grants: the look-up then fails. */
std::size_t lookUpBufferSize(int sysconf_name)
{
    const long reported = sysconf(sysconf_name);
    return reported == 0 ? LOOK_UP_BUFFER_STEP : static_cast<std::size_t>(reported);
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

} // namespace

int findUser(const char* name, UserNumbers* numbers)
{
    const std::size_t size = lookUpBufferSize(_SC_GETPW_R_SIZE_MAX);
    AUTO_FREE auto* buffer = static_cast<char*>(malloc(size));
    if (buffer == nullptr) {
        return -1;
    }

    passwd entry = {};
    passwd* found = nullptr;
    if (getpwnam_r(name, &entry, buffer, size, &found) != 0 || found == nullptr) {
        return -1;
    }
    *numbers = {entry.pw_uid, entry.pw_gid};
    return SUCCESS;
}

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

int getUserIDByName(const char* user, uid_t* uid)
{
    UserNumbers numbers = {};
    if (user == nullptr || uid == nullptr || findUser(user, &numbers) != SUCCESS) {
        return -1;
    }
    *uid = numbers.user;
    return SUCCESS;
}

int GetUserIDByUsername(char** user_id, const char* username)
{
    if (user_id == nullptr || username == nullptr) {
        LOG_INVALID_INPUT(__LINE__);
        return -1;
    }
    uid_t uid = 0;
    if (getUserIDByName(username, &uid) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* text = String("%d", static_cast<int>(uid));
    if (text == nullptr) {
        return -1;
    }
    give(user_id, text);
    return SUCCESS;
}
