#include "common/device/device_info.h"

#include "liblst/owned.h"

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

bool readDeviceInfo(DeviceInfo& info)
{
    return readBoxwellInfoValue("Model", info.model) &&
           readBoxwellInfoValue("Firmware_Version", info.firmware_id) &&
           readBoxwellInfoValue("Firmware_Time", info.firmware_time) &&
           readBoxwellInfoValue("Serial", info.serial);
}

bool readXid(AgentId& xid)
{
    if (!readCommandLine(
            xid, sizeof xid, "cat %s | grep link_agent_id | cut -c 12-", LINK_AGENT_CONFIGURATION
        )) {
        return false;
    }
    // The id ends at the first blank or line end, wherever it stands.
    if (char* end = strpbrk(xid, " \r\n")) {
        *end = '\0';
    }
    return xid[0] != '\0';
}
