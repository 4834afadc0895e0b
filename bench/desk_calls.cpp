#include "bench/desk_calls.h"

#include "common/mxl/bwdclient.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

constexpr char LOG_FILE[] = "/var/log/shbroker.log";

using Clock = std::chrono::steady_clock;

CallTimes times{};
int log_file = -1;
Clock::time_point tool_began;

/** Until its scope ends the time is of this kind. */
class Timed {
  public:
    explicit Timed(Calls kind, Clock::time_point since = Clock::now()) : kind_(kind), since_(since)
    {
    }
    Timed(const Timed&) = delete;
    Timed& operator=(const Timed&) = delete;
    ~Timed()
    {
        times[static_cast<std::size_t>(kind_)] +=
            std::chrono::duration<double, std::micro>(Clock::now() - since_).count();
    }

  private:
    Calls kind_;
    Clock::time_point since_;
};

/** The definition behind this program's. */
template<class Function> Function* next(Function* /*own*/, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/** Hands on, and times it where it is of a kind. */
template<class Function, class... Arguments>
auto pass(bool counts, Calls kind, Function* function, Arguments... arguments)
{
    if (!counts) {
        return function(arguments...);
    }
    const Timed timed(kind);
    return function(arguments...);
}

bool is_log(const char* path)
{
    return std::strcmp(path, LOG_FILE) == 0;
}

} // namespace

CallTimes takeCallTimes()
{
    return std::exchange(times, {});
}

#define NEXT(name)                                                                                 \
    ([] {                                                                                          \
        static auto* const behind = next(&name, #name);                                            \
        return behind;                                                                             \
    }())

extern "C" {

int process_request_bwdclient(char* request, int length, char** reply, int* reply_length)
{
    return pass(
        true, Calls::Transactions, NEXT(process_request_bwdclient), request, length, reply,
        reply_length
    );
}

int getpwnam_r(const char* name, passwd* entry, char* buffer, size_t size, passwd** found)
{
    return pass(true, Calls::LookUps, NEXT(getpwnam_r), name, entry, buffer, size, found);
}

int getgrnam_r(const char* name, group* entry, char* buffer, size_t size, group** found)
{
    return pass(true, Calls::LookUps, NEXT(getgrnam_r), name, entry, buffer, size, found);
}

int getgrgid_r(gid_t id, group* entry, char* buffer, size_t size, group** found)
{
    return pass(true, Calls::LookUps, NEXT(getgrgid_r), id, entry, buffer, size, found);
}

int access(const char* path, int mode) noexcept
{
    return pass(is_log(path), Calls::LogFile, NEXT(access), path, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const int file = pass(is_log(path), Calls::LogFile, NEXT(open64), path, flags, mode);
    log_file = is_log(path) ? file : log_file;
    return file;
}

ssize_t write(int file, const void* bytes, size_t size)
{
    return pass(file == log_file, Calls::LogFile, NEXT(write), file, bytes, size);
}

int close(int file)
{
    return pass(file == log_file, Calls::LogFile, NEXT(close), file);
}

FILE* popen(const char* command, const char* mode)
{
    tool_began = Clock::now();
    return NEXT(popen)(command, mode);
}

int pclose(FILE* tool)
{
    const Timed timed(Calls::Tools, tool_began);
    return NEXT(pclose)(tool);
}

int system(const char* command)
{
    return pass(true, Calls::Tools, NEXT(system), command);
}

/** The plug-in always gives its arguments in this form. */
int sd_journal_send_with_location(
    const char* file, const char* line, const char* function, const char* message, ...
)
{
    using Send = int(const char*, const char*, const char*, const char*, ...);
    static auto* const send =
        reinterpret_cast<Send*>(dlsym(RTLD_NEXT, "sd_journal_send_with_location"));
    va_list arguments;
    va_start(arguments, message);
    const char* text = va_arg(arguments, const char*);
    const char* priority = va_arg(arguments, const char*);
    const int level = va_arg(arguments, int);
    const char* category = va_arg(arguments, const char*);
    const char* name = va_arg(arguments, const char*);
    va_end(arguments);
    const Timed timed(Calls::Journal);
    return send(file, line, function, message, text, priority, level, category, name, nullptr);
}
}
