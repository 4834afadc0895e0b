// Loading the plug-in where what it depends on is loaded already, beside a library of one function.
#include "bench/families.h"

#include <dlfcn.h>

#include <memory>

namespace {

/** A library that is loaded, until the end of the scope. */
class Loaded {
  public:
    Loaded(const char* library, const char* function)
        : handle(dlopen(library, RTLD_NOW | RTLD_LOCAL)),
          found(handle != nullptr && dlsym(handle.get(), function) != nullptr)
    {
    }
    bool operator==(const Loaded& other) const { return found && other.found; }

  private:
    struct Close {
        void operator()(void* library) const { dlclose(library); }
    };
    std::unique_ptr<void, Close> handle;
    bool found;
};

Loaded plugin()
{
    return {PLUGIN_PATH, "execute"};
}

Loaded empty()
{
    return {EMPTY_PATH, "nothing"};
}

} // namespace

void benchLoad(Frame& frame)
{
    const Loaded client(CLIENT_PATH, "process_request_bwdclient");
    // Once a batch: what is loaded already would only be counted.
    frame.compare(
        {.name = "load, dependencies loaded",
         .against = "an empty library",
         .goal = 1.4,
         .keep = true,
         .before_each =
             [] {
             }},
        plugin, empty
    );
    frame.compare(
        {.name = "load and unload", .against = "an empty library", .goal = 1.4}, plugin, empty
    );
    if (dlopen(PLUGIN_PATH, RTLD_NOW | RTLD_NOLOAD) != nullptr) {
        frame.fail("load: the plug-in cannot be unloaded");
    }
}
