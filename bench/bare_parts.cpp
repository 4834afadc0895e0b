#include "bench/bare_parts.h"

#include "common/common.h"
#include "common/mxl/bwdclient.h"
#include "common/mxl_templates.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>

namespace {

/** A walk that only goes forward: each search begins where the one before ended. */
struct Walk {
    const char* at;

    /** Moves behind the next mark; false, where it was, when there is none. By strstr, for which
     * the C library is quickest. */
    bool to(std::string_view mark)
    {
        const char* found = std::strstr(at, mark.data());
        at = found == nullptr ? at : found + mark.size();
        return found != nullptr;
    }

    /** What stands up to the next mark, which the walk moves to. */
    std::string_view upTo(std::string_view mark)
    {
        const char* const begin = at;
        to(mark);
        return {begin, static_cast<std::size_t>(at - begin) - mark.size()};
    }
};

} // namespace

std::string_view between(const char* text, std::string_view begin, std::string_view end)
{
    Walk walk = {text};
    walk.to(begin);
    return walk.upTo(end);
}

Text copyOf(std::string_view text)
{
    return Text(strndup(text.data(), text.size()));
}

Text format(const char* form, ...)
{
    char text[4096];
    va_list arguments;
    va_start(arguments, form);
    const int length = vsnprintf(text, sizeof text, form, arguments);
    va_end(arguments);
    return Text(static_cast<char*>(memcpy(
        std::malloc(static_cast<std::size_t>(length) + 1), text,
        static_cast<std::size_t>(length) + 1
    )));
}

Text send(const Text& request)
{
    char* reply = nullptr;
    int length = 0;
    process_request_bwdclient(
        request.get(), static_cast<int>(std::strlen(request.get())), &reply, &length
    );
    return Text(reply);
}

bool succeeded(const Text& reply)
{
    const char* tag = std::strstr(reply.get(), "<xs:response");
    const char* status = std::strstr(tag, "status=\"") + 8;
    const char* end = std::strstr(status, "\">");
    const Text copy = copyOf({status, static_cast<std::size_t>(end - status)});
    return std::strcmp(copy.get(), "success") == 0;
}

BareUser queryUser(const char* username)
{
    BARE_DEBUG("syscmd:GetID: username=%s\n", username);
    const Text request = format(GET_USER_DATA_MXL_TEXT, "", username, "");
    const Text reply = send(request);
    if (!succeeded(reply)) {
        return {};
    }
    const std::string_view wanted = username;
    Walk walk = {reply.get()};
    // An element that none of the records has is searched for once.
    const bool has_email = std::strstr(reply.get(), "<Email_Address>") != nullptr;
    while (walk.to("<User id=")) {
        walk.to("<User_Id>");
        const std::string_view id = walk.upTo("</User_Id>");
        walk.to("<User_Name><![CDATA[");
        const std::string_view name = walk.upTo("]]></User_Name>");
        walk.to("<Group_Name><![CDATA[");
        const std::string_view group = walk.upTo("]]></Group_Name>");
        std::string_view email = "";
        if (has_email) {
            walk.to("<Email_Address><![CDATA[");
            email = walk.upTo("]]></Email_Address>");
        }
        if (name == wanted || name.substr(0, 9) == "leafuser_") {
            return {copyOf(id), copyOf(group), copyOf(email)};
        }
        bareStatement(
            LogLevel::Error, __FILE_NAME__, __LINE__, __func__,
            "ERROR [syscmd:GetUserData]: GetUserData and User Group failed\n"
        );
        BARE_DEBUG("DEBUG:%s:%d syscmd:request=%s\n", __FILE_NAME__, __LINE__, request.get());
        BARE_DEBUG("DEBUG:%s:%d syscmd:respond=%s\n", __FILE_NAME__, __LINE__, reply.get());
    }
    return {};
}

Text decode(const std::string& base64)
{
    Text text(static_cast<char*>(std::malloc(base64.size() / 4 * 3 + 4)));
    int state = 0;
    unsigned save = 0;
    const std::size_t size = g_base64_decode_step(
        base64.c_str(), base64.size(), reinterpret_cast<unsigned char*>(text.get()), &state, &save
    );
    text.get()[size] = '\0';
    return text;
}

Text readOwnerFile()
{
    const int fd = open(OWNER_FILE, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    fstat(fd, &status);
    Text text(static_cast<char*>(std::malloc(static_cast<std::size_t>(status.st_size) + 1)));
    const ssize_t got = read(fd, text.get(), static_cast<std::size_t>(status.st_size));
    close(fd);
    text.get()[got < 0 ? 0 : got] = '\0';
    return text;
}

Text ownerName()
{
    return copyOf(between(readOwnerFile().get(), "<owner>", "</owner>"));
}

Text systemId(const char* username)
{
    const auto size = static_cast<std::size_t>(sysconf(_SC_GETPW_R_SIZE_MAX));
    const Text buffer(static_cast<char*>(std::malloc(size)));
    passwd entry = {};
    passwd* found = nullptr;
    getpwnam_r(username, &entry, buffer.get(), size, &found);
    return format("%d", static_cast<int>(found->pw_uid));
}

bool isMember(const char* login)
{
    const Text reply = send(format(GET_USER_DATA_MXL_TEXT, "", login, ""));
    const char* text = reply.get();
    const bool locked = between(text, "<IsLocked>", "</IsLocked>") != "0";
    const Text name = copyOf(between(text, "<User_Name><![CDATA[", "]]></User_Name>"));
    if (locked) {
        return false;
    }
    const auto size = static_cast<std::size_t>(sysconf(_SC_GETPW_R_SIZE_MAX));
    const Text user_buffer(static_cast<char*>(std::malloc(size)));
    passwd user = {};
    passwd* found_user = nullptr;
    getpwnam_r(name.get(), &user, user_buffer.get(), size, &found_user);

    const auto group_size = static_cast<std::size_t>(sysconf(_SC_GETGR_R_SIZE_MAX));
    const Text group_buffer(static_cast<char*>(std::malloc(group_size)));
    group primary = {};
    group* found = nullptr;
    getgrgid_r(found_user->pw_gid, &primary, group_buffer.get(), group_size, &found);
    return std::strcmp(found->gr_name, "sky-hold") == 0;
}
