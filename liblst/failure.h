/** How the functions of this library report bad arguments. */
#pragma once

#include <cerrno>

/** Sets errno to EINVAL and returns `result`, the function's failure value. */
template<typename T> T badArgument(T result)
{
    errno = EINVAL;
    return result;
}
