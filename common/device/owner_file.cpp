#include "common/common.h"
#include "liblst/owned.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr const char* LINK_AGENT_CONFIGURATION = "/opt/linkhub/etc/linkagent.conf";

/** Reads the first line that a shell command prints, with its line end. The command's exit status
 * is not looked at. */
[[gnu::format(printf, 3, 4)]] bool
readCommandLine(char* line, int line_size, const char* format, ...)
{
    char command[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(command, sizeof command, format, arguments);
    va_end(arguments);

    AUTO_CLOSE_PIPE FILE* pipe = popen(command, "r");
    return pipe != nullptr && fgets(line, line_size, pipe) != nullptr;
}

/** One element of the file whose value may be left out, tags and all. */
struct OptionalElement {
    const char* begin = "";
    const char* value = "";
    const char* end = "";
};

} // namespace

bool readBoxwellInfoValue(const char* key, DeviceValue& value)
{
    if (!readCommandLine(value, sizeof value, "boxwellinfo %s", key)) {
        return false;
    }
    std::size_t length = strlen(value);
    while (length > 0 && (value[length - 1] == '\n' || value[length - 1] == '\r')) {
        value[--length] = '\0';
    }
    return length > 0 && strstr(value, "ERROR:") == nullptr && strstr(value, "error:") == nullptr;
}

bool readXid(AgentId& xid)
{
    if (!readCommandLine(
            xid, sizeof xid, "cat %s | grep link_agent_id | cut -c 12-", LINK_AGENT_CONFIGURATION
        )) {
        return false;
    }
    // The id ends at the first blank or line end, wherever it stands.
    xid[strcspn(xid, " \r\n")] = '\0';
    return xid[0] != '\0';
}

int createOwnerFile(
    bool use_linkhub, const char* sso_username, const char* p2p_username, const char* path
)
{
    // Opened, and so emptied, before anything is known: an owner file that cannot be completed is
    // deleted rather than left with the former owner.
    AUTO_CLOSE_FILE FILE* file = fopen(path, "we");
    if (file == nullptr) {
        return -1;
    }

    DeviceValue model;
    DeviceValue firmware_id;
    DeviceValue firmware_time;
    DeviceValue serial;
    if (!readBoxwellInfoValue("Model", model) ||
        !readBoxwellInfoValue("Firmware_Version", firmware_id) ||
        !readBoxwellInfoValue("Firmware_Time", firmware_time) ||
        !readBoxwellInfoValue("Serial", serial)) {
        unlink(path);
        return -3;
    }

    AgentId xid;
    OptionalElement agent;
    if (use_linkhub && readXid(xid)) {
        agent = {"<link_agent_id>", xid, "</link_agent_id>"};
    }
    OptionalElement remote_owner;
    if (p2p_username != nullptr) {
        remote_owner = {"<p2powner>", p2p_username, "</p2powner>"};
    }
    // Straight into the stream: the file is empty now, and must not stay so for want of memory.
    const int written = fprintf(
        file,
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><registration>"
        "<owner>%s</owner>"
        "<model>%s</model>"
        "<firmware_id>%s</firmware_id>"
        "<firmware_time>%s</firmware_time>"
        "<serial>%s</serial>"
        "%s%s%s"
        "%s%s%s"
        "</registration>",
        sso_username, model, firmware_id, firmware_time, serial, agent.begin, agent.value,
        agent.end, remote_owner.begin, remote_owner.value, remote_owner.end
    );
    return written < 0 ? -4 : SUCCESS;
}
