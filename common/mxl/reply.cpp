#include "common/mxl/reply.h"

#include "common/cut.h"
#include "common/log.h"
#include "common/owned_text.h"

#include <algorithm>

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
        LOG_INVALID_INPUT(__LINE__);
        return -1;
    }
    const std::string_view start_tag = cut(respond, "<xs:response", "<");
    const char* const tag_end = start_tag.data() + start_tag.size();
    std::string_view value = cut(start_tag.data(), "status=\"", "\">");
    if (value.data() + value.size() > tag_end) { // what is found behind the tag is another's
        const char* const begin = std::min(value.data(), tag_end);
        value = {begin, static_cast<std::size_t>(tag_end - begin)};
    }
    return giveCopy(status, value);
}

int GetMXLErrorDetail(char** error_detail, const char* respond)
{
    if (error_detail == nullptr || respond == nullptr) {
        LOG_INVALID_INPUT(__LINE__);
        return -1;
    }
    return CutStr(error_detail, respond, "<xs:error-details><![CDATA[", "]]></xs:error-details>");
}
