/** What the calls of --wrap are made of: each asks whether it is to fail, and counts what it gives.
 */
#pragma once

#include "tools/failing_calls/faults.h"

#include <cerrno>

/** Resources that were given and not taken back. */
extern long live;

/** Whether a call under test is going on. */
bool faultsAreArmed();

template<class Resource> Resource* counted(Resource* resource)
{
    live += resource != nullptr ? 1 : 0;
    return resource;
}

#define DECLARE(type, name, parameters)                                                            \
    extern "C" type __real_##name parameters;                                                      \
    extern "C" type __wrap_##name parameters;                                                      \
    type __wrap_##name parameters
/** A call that fails with `failure`, or else is made. */
#define CALL(kind, type, name, parameters, arguments, failure)                                     \
    DECLARE(type, name, parameters)                                                                \
    {                                                                                              \
        return strike(kind) != 0 ? (failure) : __real_##name arguments;                            \
    }
/** One whose result is a resource. */
#define OBTAIN(kind, type, name, parameters, arguments)                                            \
    DECLARE(type, name, parameters)                                                                \
    {                                                                                              \
        return strike(kind) != 0 ? nullptr : counted(__real_##name arguments);                     \
    }
/** One that releases a resource, even where it fails. */
#define RELEASE(kind, name, parameters, arguments, failure, counts)                                \
    DECLARE(int, name, parameters)                                                                 \
    {                                                                                              \
        const int error = strike(kind);                                                            \
        live -= (counts);                                                                          \
        const int result = __real_##name arguments;                                                \
        errno = error != 0 ? error : errno;                                                        \
        return error != 0 ? (failure) : result;                                                    \
    }
