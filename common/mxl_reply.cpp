#include "common/cut.h"
#include "common/io.h"
#include "common/owned_text.h"

int CutStr(char** result, const char* string, const char* begin, const char* end)
{
    if (result == nullptr || string == nullptr || begin == nullptr || end == nullptr) {
        return -1;
    }
    return giveCopy(result, cut(string, begin, end));
}

int GetMXLStatus(char** status, const char* respond)
{
    if (status == nullptr || respond == nullptr) {
        LOG(Error, "ERROR [syscmd:GetMXLStatus]: invalid input arguments\n");
        return -1;
    }
    const std::string_view start_tag = cut(respond, "<xs:response", "<");
    return giveCopy(status, cut(start_tag, "status=\"", "\">"));
}

int GetMXLErrorDetail(char** error_detail, const char* respond)
{
    if (error_detail == nullptr || respond == nullptr) {
        LOG(Error, "ERROR [syscmd:GetMXLErrorDetail]: invalid input arguments\n");
        return -1;
    }
    return CutStr(error_detail, respond, "<xs:error-details><![CDATA[", "]]></xs:error-details>");
}
