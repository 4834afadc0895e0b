/** Filling in the request templates. */
#pragma once

#include "common/mxl/texts.h"
#include "common/mxl_templates.h"

#include <cstdio>

/**
 * Fills in a template; use FORMAT_TEMPLATE, which has the arguments checked.
 *
 * @return the request, which the caller releases with free(); null when memory runs out
 */
char* formatTemplate(const char* format, ...);

/** formatTemplate of the template NAME, with arguments that the compiler checks against its
 * literal, which is not evaluated. */
#define FORMAT_TEMPLATE(NAME, ...)                                                                 \
    (static_cast<void>(sizeof(printf(NAME##_TEXT __VA_OPT__(, ) __VA_ARGS__))),                    \
     formatTemplate(NAME __VA_OPT__(, ) __VA_ARGS__))
