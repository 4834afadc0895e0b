#include "common/mxl/format_template.h"

#include "liblst/format.h"

// FORMAT_TEMPLATE has had the arguments checked.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

char* formatTemplate(const char* format, ...)
{
    char* text = nullptr;
    FORMAT_ARGUMENTS(text, format);
    return text;
}
