#include "bench/daemon.h"

#include "common/mxl/bwdclient.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

const std::string* canned = nullptr;
bool recording = false;
std::string requests;

} // namespace

void setReply(const std::string& reply)
{
    canned = &reply;
}

std::string successReply(const std::string& content)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?><xs:mxl><xs:transaction id="trid">)"
           R"(<xs:response id="opid" status="success">)" +
           content + "</xs:response></xs:transaction></xs:mxl>";
}

std::string userRecord(const std::string& name, std::size_t id, bool bare)
{
    const std::string number = std::to_string(id);
    std::string text = "<User id=\"" + number + "\" resource-id=\"" + number +
                       "\" resource-type=\"User\"><User_Id>" + number +
                       "</User_Id><User_Name><![CDATA[" + name +
                       "]]></User_Name><Group_Name><![CDATA[sky-hold]]></Group_Name>";
    if (!bare) {
        text += "<Email_Address><![CDATA[" + name + "@example.com]]></Email_Address>";
    }
    return text + "<IsLocked>0</IsLocked></User>";
}

void recordRequests(bool on)
{
    recording = on;
}

std::string takeRequests()
{
    return std::exchange(requests, "");
}

extern "C" int process_request_bwdclient(char* request, int length, char** reply, int* reply_length)
{
    if (recording) {
        requests.append(request, static_cast<std::size_t>(length)).append("\n");
    }
    *reply = static_cast<char*>(std::malloc(canned->size() + 1));
    if (*reply == nullptr) {
        return -1;
    }
    std::memcpy(*reply, canned->c_str(), canned->size() + 1);
    *reply_length = static_cast<int>(canned->size());
    return 0;
}
