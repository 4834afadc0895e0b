#include "common/log.h"

#include "liblst/owned.h"
#include "liblst/whole_file.h"

#include <fcntl.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>

int MAX_LOG_LEVEL = 3;

namespace {

constexpr const char* LOG_FILE = "/var/log/shbroker.log";
constexpr const char* CATEGORY = "shbroker";

/** Bytes in front of a message for either prefix: level, file name (NAME_MAX), line, and, for the
 * file, a time stamp. */
constexpr std::size_t PREFIX_ROOM = 640;
/** Longest message that needs no allocation and is formatted once, with its NUL; requests fit. */
constexpr std::size_t SHORT_MESSAGE = 2048;

struct Statement {
    LogLevel level;
    const char* file;
    int line;
    const char* function;
};

const char* nameOf(LogLevel level)
{
    switch (level) {
    case LogLevel::Error:
        return "ERROR";
    case LogLevel::Info:
        return "INFO";
    case LogLevel::Debug:
        break;
    }
    return "DEBUG";
}

/** Formats a prefix so that it ends where `message` begins; returns its first byte. */
[[gnu::format(printf, 2, 3)]] char* putBefore(char* message, const char* format, ...)
{
    char prefix[PREFIX_ROOM];
    va_list arguments;
    va_start(arguments, format);
    const int written = vsnprintf(prefix, sizeof prefix, format, arguments);
    va_end(arguments);

    const std::size_t length =
        std::min(static_cast<std::size_t>(std::max(written, 0)), PREFIX_ROOM - 1);
    return static_cast<char*>(memcpy(message - length, prefix, length));
}

void sendEntry(const Statement& statement, const char* text)
{
    char file[PREFIX_ROOM];
    char line[32];
    snprintf(file, sizeof file, "CODE_FILE=%s", statement.file);
    snprintf(line, sizeof line, "CODE_LINE=%d", statement.line);
    sd_journal_send_with_location(
        file, line, statement.function, "MESSAGE=%s", text, "PRIORITY=%i",
        static_cast<int>(statement.level), "CATEGORY=%s", CATEGORY, nullptr
    );
}

/** Sends each line of the message; the separators are put back afterwards. */
void sendToJournal(const Statement& statement, char* message)
{
    char* piece =
        putBefore(message, "%s:%s:%d: ", nameOf(statement.level), statement.file, statement.line);
    while (char* separator = strpbrk(piece, "\r\n")) {
        const char kept = *separator;
        *separator = '\0';
        if (*piece != '\0') {
            sendEntry(statement, piece);
        }
        *separator = kept;
        piece = separator + 1;
    }
}

void appendToFile(const Statement& statement, char* message)
{
    // Without O_CREAT: the plug-in never creates the file, even if it vanished just now.
    AUTO_CLOSE_FD const int file = open(LOG_FILE, O_WRONLY | O_APPEND | O_CLOEXEC);
    if (file < 0) {
        return;
    }

    char timestamp[256] = "";
    const time_t now = time(nullptr);
    tm local = {};
    if (localtime_r(&now, &local) != nullptr) {
        strftime(timestamp, sizeof timestamp, "%b %e %Y %H:%M:%S", &local);
    }

    const char* text = putBefore(
        message, "%s %s:%s:%d ", timestamp, nameOf(statement.level), statement.file, statement.line
    );
    writeAll(file, text, strlen(text));
}

using SmallBuffer = char[PREFIX_ROOM + SHORT_MESSAGE];

/** Formats the message with PREFIX_ROOM bytes to spare in front: in `small` or, when it is longer,
 * in `*large`, newly allocated; null when that fails. */
[[gnu::format(printf, 3, 0)]] char*
formatMessage(SmallBuffer& small, char** large, const char* format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    char* message = small + PREFIX_ROOM;
    const int length = vsnprintf(message, SHORT_MESSAGE, format, arguments);
    if (length < 0) {
        message = nullptr; // GCOV_EXCL_LINE: no format of ours fails
    } else if (static_cast<std::size_t>(length) >= SHORT_MESSAGE) {
        const std::size_t size = static_cast<std::size_t>(length) + 1;
        *large = static_cast<char*>(malloc(PREFIX_ROOM + size));
        message = *large == nullptr ? nullptr : *large + PREFIX_ROOM;
        if (message != nullptr) {
            vsnprintf(message, size, format, again);
        }
    }
    va_end(again);
    return message;
}

} // namespace

void logStatement(
    LogLevel level, const char* file, int line, const char* function, const char* format, ...
)
{
    const int caller_errno = errno;
    const bool to_journal = static_cast<int>(level) <= MAX_LOG_LEVEL;
    const bool to_file = access(LOG_FILE, F_OK) == 0;
    errno = caller_errno;
    if (!to_journal && !to_file) {
        return;
    }

    SmallBuffer small;
    AUTO_FREE char* large = nullptr;
    va_list arguments;
    va_start(arguments, format);
    char* message = formatMessage(small, &large, format, arguments);
    va_end(arguments);
    if (message != nullptr) {
        const Statement statement = {level, file, line, function};
        if (to_journal) {
            sendToJournal(statement, message);
        }
        if (to_file) {
            appendToFile(statement, message);
        }
    }
    errno = caller_errno;
}
