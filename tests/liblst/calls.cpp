#include "tests/liblst/calls.h"

#define CALL(type, name, parameters, arguments) CALL_AT(on_##name, type, name, parameters, arguments)
#define CALL_AT(place, type, name, parameters, arguments)                                                              \
    std::function<type parameters> place;                                                                              \
    extern "C" type __real_##name parameters;                                                                          \
    extern "C" type __wrap_##name parameters;                                                                          \
    type __wrap_##name parameters                                                                                      \
    {                                                                                                                  \
        return place ? place arguments : __real_##name arguments;                                                      \
    }

CALL(ssize_t, read, (int fd, void* to, std::size_t size), (fd, to, size))
CALL(dirent64*, readdir64, (DIR * directory), (directory))
CALL(void*, realloc, (void* old, std::size_t size), (old, size))
CALL_AT(on_ctype_b_loc, const unsigned short**, __ctype_b_loc, (), ())
CALL(long, sysconf, (int name), (name))
CALL(int, poll, (pollfd * waited, nfds_t count, int milliseconds), (waited, count, milliseconds))
