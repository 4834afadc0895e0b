/** What device this is: what its tools print of it. */
#pragma once

#include <string>

/** A line of device information, with its line end and a NUL. */
using DeviceValue = char[1024];

/** Asks the device-information tool for `key`; false when it gives none. */
bool readBoxwellInfoValue(const char* key, DeviceValue& value);

/** What the owner file tells of the device. */
struct DeviceInfo {
    DeviceValue model;
    DeviceValue firmware_id;
    DeviceValue firmware_time;
    DeviceValue serial;
};

/** Asks for all of it, in that order; false at the first value that is missing. */
bool readDeviceInfo(DeviceInfo& info);

/** The remote-access agent's id, with its line end and a NUL. */
using AgentId = char[256];

/** Reads the remote-access agent's id; false when there is none. */
bool readXid(AgentId& xid);

/** The same for strings; `value` is untouched when the tool gives none. */
inline bool readBoxwellInfoValue(const std::string& key, std::string& value)
{
    DeviceValue text;
    const bool given = readBoxwellInfoValue(key.c_str(), text);
    if (given) {
        value = text;
    }
    return given;
}

/** The same for a string, untouched when there is none. */
inline bool readXid(std::string& xid)
{
    AgentId text;
    const bool given = readXid(text);
    if (given) {
        xid = text;
    }
    return given;
}
