#include "bench/bare_log.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

constexpr std::size_t LONGEST = 65536;

const char* nameOf(LogLevel level)
{
    return level == LogLevel::Error ? "ERROR" : level == LogLevel::Info ? "INFO" : "DEBUG";
}

// The journal's call is given; each of its fields is one conversion of ready text.
void send(
    LogLevel level, const char* file, int line, const char* function, const char* piece, int length
)
{
    char file_field[288];
    char line_field[32];
    std::snprintf(file_field, sizeof file_field, "CODE_FILE=%s", file);
    std::snprintf(line_field, sizeof line_field, "CODE_LINE=%d", line);
    sd_journal_send_with_location(
        file_field, line_field, function, "MESSAGE=%.*s", length, piece, "PRIORITY=%i",
        static_cast<int>(level), "CATEGORY=shbroker", nullptr
    );
}

void append(const char* name, const char* file, int line, const char* message, std::size_t length)
{
    // The file is named anew by each statement, so it is opened by each.
    const int log = open(LOG_FILE, O_WRONLY | O_APPEND | O_CLOEXEC);
    char prefix[640];
    const time_t now = time(nullptr);
    tm local = {};
    localtime_r(&now, &local);
    const std::size_t stamp = strftime(prefix, sizeof prefix, "%b %e %Y %H:%M:%S", &local);
    const int rest =
        std::snprintf(prefix + stamp, sizeof prefix - stamp, " %s:%s:%d ", name, file, line);
    const iovec parts[] = {
        {prefix, stamp + static_cast<std::size_t>(rest)}, {const_cast<char*>(message), length}};
    if (writev(log, parts, 2) < 0) {
        std::perror(LOG_FILE);
    }
    close(log);
}

} // namespace

void setLog(int level, bool file)
{
    MAX_LOG_LEVEL = level;
    unlink(LOG_FILE);
    if (file) {
        close(open(LOG_FILE, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    }
}

void bareStatement(
    LogLevel level, const char* file, int line, const char* function, const char* format, ...
)
{
    const bool to_journal = static_cast<int>(level) <= MAX_LOG_LEVEL;
    const bool to_file = access(LOG_FILE, F_OK) == 0;
    if (!to_journal && !to_file) {
        return;
    }
    char text[LONGEST];
    const int prefix = std::snprintf(text, sizeof text, "%s:%s:%d: ", nameOf(level), file, line);
    char* message = text + prefix;
    va_list arguments;
    va_start(arguments, format);
    const int length =
        vsnprintf(message, sizeof text - static_cast<std::size_t>(prefix), format, arguments);
    va_end(arguments);
    if (to_journal) {
        const char* piece = text;
        while (const char* end = std::strpbrk(piece, "\r\n")) {
            if (end != piece) {
                send(level, file, line, function, piece, static_cast<int>(end - piece));
            }
            piece = end + 1;
        }
    }
    if (to_file) {
        append(nameOf(level), file, line, message, static_cast<std::size_t>(length));
    }
}
