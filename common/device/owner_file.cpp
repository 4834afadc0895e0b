#include "common/device/owner_file.h"

#include "common/cut.h"
#include "common/device/device_info.h"
#include "common/device/owner_names.h"
#include "common/owned_text.h"
#include "liblst/whole_file.h"

#include <unistd.h>

#include <cstdio>

namespace {

/** A copy of the name that `find` finds in the owner file; null when there is none to read. */
char* readName(std::string_view (*find)(const char*))
{
    AUTO_FREE char* file = nullptr;
    char* name = nullptr;
    return readFile(&file, OWNER_FILE, OnReadError::Keep) == SUCCESS &&
                   giveCopy(&name, find(file)) == SUCCESS
               ? name
               : nullptr;
}

/** One element of the file whose value may be left out, tags and all. */
struct OptionalElement {
    const char* begin = "";
    const char* value = "";
    const char* end = "";
};

} // namespace

std::string_view ownerIn(const char* file)
{
    return cut(file, "<owner>", "</owner>");
}

std::string_view p2pOwnerIn(const char* file)
{
    return cut(file, "<p2powner>", "</p2powner>");
}

char* GetSSOOwner()
{
    return readName(ownerIn);
}

char* GetP2POwner()
{
    return readName(p2pOwnerIn);
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

    DeviceInfo info;
    if (!readDeviceInfo(info)) {
        unlink(path);
        return -3;
    }

    AgentId xid;
    OptionalElement agent;
    if (use_linkhub && readXid(xid)) {
        agent = {"<link_agent_id>", xid, "</link_agent_id>"};
    }
    OptionalElement p2p_owner;
    if (p2p_username != nullptr) {
        p2p_owner = {"<p2powner>", p2p_username, "</p2powner>"};
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
        sso_username, info.model, info.firmware_id, info.firmware_time, info.serial, agent.begin,
        agent.value, agent.end, p2p_owner.begin, p2p_owner.value, p2p_owner.end
    );
    return written < 0 ? -4 : SUCCESS;
}
