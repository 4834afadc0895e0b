#include "tests/liblst/faults.h"

#include <sys/types.h>

#include <cerrno>
#include <climits>
#include <cstring>

int allocations_left = INT_MAX;
const char* failing_call = nullptr;

static bool fails(const char* call, int error)
{
    const bool now =
        error == ENOMEM ? allocations_left-- == 0 : failing_call != nullptr && std::strcmp(failing_call, call) == 0;
    errno = now ? error : errno;
    return now;
}

// NOLINTBEGIN(bugprone-macro-parentheses): the linker's --wrap gives these names.
#define WRAP(type, name, parameters, arguments, failure, error)                                                        \
    extern "C" type __real_##name parameters;                                                                          \
    extern "C" type __wrap_##name parameters;                                                                          \
    type __wrap_##name parameters                                                                                      \
    {                                                                                                                  \
        return fails(#name, error) ? failure : __real_##name arguments;                                                \
    }
// NOLINTEND(bugprone-macro-parentheses)

WRAP(void*, malloc, (size_t size), (size), nullptr, ENOMEM)
WRAP(void*, realloc, (void* old, size_t size), (old, size), nullptr, ENOMEM)
WRAP(char*, strdup, (const char* string), (string), nullptr, ENOMEM)
WRAP(char*, strndup, (const char* string, size_t size), (string, size), nullptr, ENOMEM)
WRAP(int, close, (int fd), (fd), -1, EIO)
WRAP(int, lockf64, (int fd, int command, off_t length), (fd, command, length), -1, ENOLCK)
