// Commands of the shell.
#include "tools/failing_calls/wrap.h"

#include <map>

bool shell_is_replayed = false;
std::function<void(const char*)> on_command;
std::function<std::string(const char*)> on_print;

/** What a command prints: asked once, unless the program tells it. */
static std::string printedBy(const char* command)
{
    if (on_print) {
        return on_print(command);
    }
    static std::map<std::string, std::string> printed;
    auto known = printed.find(command);
    if (known == printed.end()) {
        char text[1024] = "";
        FILE* pipe = popen(command, "r");
        text[fread(text, 1, sizeof text - 1, pipe)] = '\0';
        pclose(pipe);
        known = printed.emplace(command, text).first;
    }
    return known->second;
}

static FILE* replay(const char* command)
{
    const Aside aside;
    const std::string text = printedBy(command);
    FILE* stream = fmemopen(nullptr, text.size() + 1, "w+"); // which owns its memory
    fwrite(text.data(), 1, text.size(), stream);
    rewind(stream);
    return stream;
}
DECLARE(FILE*, popen, (const char* command, const char* mode))
{
    if (strike("popen") != 0) {
        return nullptr;
    }
    return counted(
        faultsAreArmed() && shell_is_replayed ? replay(command) : __real_popen(command, mode)
    );
}
extern "C" int __real_fclose(FILE* stream);
DECLARE(int, pclose, (FILE * stream))
{
    const int error = strike("pclose");
    live -= 1;
    const int status =
        faultsAreArmed() && shell_is_replayed ? __real_fclose(stream) : __real_pclose(stream);
    errno = error != 0 ? error : errno;
    return error != 0 ? -1 : status;
}
DECLARE(int, system, (const char* command))
{
    if (strike("system") != 0) {
        return -1;
    }
    if (!shell_is_replayed) {
        return __real_system(command);
    }
    const Aside aside;
    on_command(command);
    return 0;
}
