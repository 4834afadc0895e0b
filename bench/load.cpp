// Loading the plug-in where what it depends on is loaded already, beside a library of one function.
#include "bench/families.h"

#include <dlfcn.h>

namespace {

/** Loads a library, finds a function and unloads it. */
bool load(const char* library, const char* function)
{
    void* handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    const bool found = handle != nullptr && dlsym(handle, function) != nullptr;
    return found && dlclose(handle) == 0;
}

} // namespace

void benchLoad(Frame& frame)
{
    void* const client = dlopen(CLIENT_PATH, RTLD_NOW | RTLD_LOCAL);
    frame.compare(
        {.name = "load, dependencies loaded", .against = "an empty library"},
        [] { return load(PLUGIN_PATH, "execute"); }, [] { return load(EMPTY_PATH, "nothing"); }
    );
    if (dlopen(PLUGIN_PATH, RTLD_NOW | RTLD_NOLOAD) != nullptr) {
        frame.fail("load: the plug-in cannot be unloaded");
    }
    dlclose(client);
}
