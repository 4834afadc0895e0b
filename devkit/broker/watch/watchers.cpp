#include "devkit/broker/watch/watchers.h"

#include "devkit/boxwelld/files.h"
#include "devkit/broker/command.h"
#include "devkit/broker/device.h"
#include "devkit/bwdrecord/append.h"
#include "devkit/bwdrecord/line.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace {

/** Begins an empty file as a recording. */
void begin_recording(int file)
{
    Text header;
    add_header(&header);
    append_whole(file, header.bytes, header.length);
    text_free(&header);
}

/** The file with a watcher's lock; -1 when there is no way to it. */
int open_locked(bool& empty)
{
    for (;;) {
        Fd file(open_recording(WATCH_FILE, &empty));
        if (file.get() < 0 || flock(file.get(), LOCK_SH) != 0) {
            return -1;
        }
        struct stat locked = {};
        struct stat there = {};
        // A broker may have removed it in between.
        if (fstat(file.get(), &locked) == 0 && stat(WATCH_FILE, &there) == 0 &&
            locked.st_ino == there.st_ino) {
            return fcntl(file.get(), F_DUPFD_CLOEXEC, 0);
        }
    }
}

} // namespace

Watching::Watching()
{
    bool empty = false;
    file_ = open_locked(empty);
    if (file_ < 0) {
        throw BadUse(std::string("cannot watch by ") + WATCH_FILE + ": " + std::strerror(errno));
    }
    if (empty) {
        begin_recording(file_);
    }
    const std::string text = device::text_of(WATCH_FILE).value_or("");
    lines_before_ = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
}

Watching::~Watching()
{
    close(file_);
}

bool is_watched()
{
    const Fd file(open(WATCH_FILE, O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) {
        return false;
    }
    if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        return true;
    }
    unlink(WATCH_FILE);
    return false;
}

void show_watchers(const std::string& path, std::uint64_t offset)
{
    bool empty = false;
    const Fd file(open_recording(WATCH_FILE, &empty));
    if (file.get() < 0) {
        return;
    }
    if (empty) {
        begin_recording(file.get());
    }
    const std::string own = "\"pid\":" + std::to_string(getpid()) + ',';
    std::ifstream recording(path);
    recording.seekg(static_cast<std::streamoff>(offset));
    for (std::string line; std::getline(recording, line);) {
        if (line.find(own) != std::string::npos) {
            line += '\n';
            append_whole(file.get(), line.data(), line.size());
        }
    }
}
