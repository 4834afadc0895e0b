#include "common/common.h"

bool readBoxwellInfoValue(const std::string& key, std::string& value)
{
    DeviceValue text;
    if (!readBoxwellInfoValue(key.c_str(), text)) {
        return false;
    }
    value = text;
    return true;
}

bool readXid(std::string& xid)
{
    AgentId text;
    if (!readXid(text)) {
        return false;
    }
    xid = text;
    return true;
}
