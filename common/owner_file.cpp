#include "common/common.h"
#include "liblst/owned.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

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

void appendElement(std::string& text, std::string_view name, std::string_view value)
{
    text.append("<").append(name).append(">").append(value);
    text.append("</").append(name).append(">");
}

/** Appends what device this is; false when a value is missing. */
bool appendDevice(std::string& text)
{
    struct Element {
        const char* name;
        const char* key;
    };
    constexpr Element ELEMENTS[] = {
        {"model", "Model"},
        {"firmware_id", "Firmware_Version"},
        {"firmware_time", "Firmware_Time"},
        {"serial", "Serial"},
    };
    std::string value;
    for (const auto& [name, key] : ELEMENTS) {
        if (!readBoxwellInfoValue(key, value)) {
            return false;
        }
        appendElement(text, name, value);
    }
    return true;
}

} // namespace

bool readBoxwellInfoValue(const std::string& key, std::string& value)
{
    char line[1024];
    if (!readCommandLine(line, sizeof line, "boxwellinfo %s", key.c_str())) {
        return false;
    }

    std::string_view text = line;
    text = text.substr(0, text.find_last_not_of("\r\n") + 1);
    if (text.empty() || text.find("ERROR:") != text.npos || text.find("error:") != text.npos) {
        return false;
    }
    value = text;
    return true;
}

bool readXid(std::string& xid)
{
    char line[256];
    if (!readCommandLine(
            line, sizeof line, "cat %s | grep link_agent_id | cut -c 12-", LINK_AGENT_CONFIGURATION
        )) {
        return false;
    }

    // The id ends at the first blank or line end, wherever it stands.
    line[strcspn(line, " \r\n")] = '\0';
    if (line[0] == '\0') {
        return false;
    }
    xid = line;
    return true;
}

int createOwnerFile(
    bool use_linkhub, const std::string& sso_username, const char* p2p_username, const char* path
)
{
    // Opened, and so emptied, before anything is known: an owner file that cannot be completed is
    // deleted rather than left with the former owner.
    AUTO_CLOSE_FILE FILE* file = fopen(path, "we");
    if (file == nullptr) {
        return -1;
    }

    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?><registration>";
    appendElement(text, "owner", sso_username);
    if (!appendDevice(text)) {
        unlink(path);
        return -3;
    }
    std::string xid;
    if (use_linkhub && readXid(xid)) {
        appendElement(text, "link_agent_id", xid);
    }
    if (p2p_username != nullptr) {
        appendElement(text, "p2powner", p2p_username);
    }
    text += "</registration>";
    return fputs(text.c_str(), file) < 0 ? -4 : SUCCESS;
}
