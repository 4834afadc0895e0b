// The rows as definitions.
#define MXL_TEMPLATE(name, text)                                                                   \
    EXPORTED extern const char* const name;                                                        \
    inline constexpr char name##_TEXT[] = text;                                                    \
    const char* const name = name##_TEXT

#include "common/mxl_templates.h"
