#include "devkit/bwdrecord/append.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace {

/** Keeps SIGXFSZ, by which a file that may not grow ends the process, from this thread's writes. */
class NoSizeSignal {
  public:
    NoSizeSignal()
    {
        sigemptyset(&signal_);
        sigaddset(&signal_, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &signal_, &before_);
    }
    NoSizeSignal(const NoSizeSignal&) = delete;
    NoSizeSignal& operator=(const NoSizeSignal&) = delete;
    ~NoSizeSignal() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    /** Takes the signal that a write has left. */
    void forget() const
    {
        const timespec at_once = {0, 0};
        sigtimedwait(&signal_, nullptr, &at_once);
    }

  private:
    sigset_t signal_;
    sigset_t before_;
};

/** Writes without the signal for a file that may not grow; none comes where files have no limit. */
ssize_t write_quietly(int fd, const char* bytes, std::size_t length)
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur == RLIM_INFINITY) {
        return write(fd, bytes, length);
    }
    const NoSizeSignal no_signal;
    const ssize_t written = write(fd, bytes, length);
    if (written < 0 && errno == EFBIG) {
        no_signal.forget();
    }
    return written;
}

/** Takes back what a disk that is full has taken of a line, where nothing has followed it. */
void take_back(int fd, std::size_t written)
{
    struct stat status = {};
    const off_t end = lseek(fd, 0, SEEK_CUR); // behind what was written
    if (end >= 0 && fstat(fd, &status) == 0 && status.st_size == end &&
        ftruncate(fd, end - static_cast<off_t>(written)) != 0) {
        return; // a reader tells a cut line
    }
}

} // namespace

int open_recording(const char* path, bool* empty)
{
    // O_NONBLOCK: a pipe that nobody reads is not to be waited for.
    const int fd =
        open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600);
    struct stat status = {};
    if (fd >= 0 && (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))) {
        close(fd);
        errno = EINVAL;
        return -1;
    }
    *empty = status.st_size == 0;
    return fd;
}

bool append_whole(int fd, const char* bytes, std::size_t length)
{
    const ssize_t written = write_quietly(fd, bytes, length);
    if (written > 0 && static_cast<std::size_t>(written) < length) {
        take_back(fd, static_cast<std::size_t>(written));
    }
    return written == static_cast<ssize_t>(length);
}
