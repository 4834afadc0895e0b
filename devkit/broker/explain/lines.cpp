#include "devkit/broker/explain/lines.h"

#include "devkit/broker/command.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

constexpr int PAUSE_MILLISECONDS = 200;
constexpr int PAUSES_UNTIL_QUIET = 10;

/** SIGINT and SIGTERM, to be read instead of ending the process. */
int catch_signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

} // namespace

Lines::Lines(std::string path, bool follow)
    : path_(std::move(path)), is_input_(path_ == "-"), follow_(follow && !is_input_)
{
    if (is_input_ || follow_) {
        signals_ = catch_signals();
    }
    if (is_input_) {
        file_ = STDIN_FILENO;
        return;
    }
    open_file();
    if (file_ < 0) {
        std::fprintf(stderr, "broker: waiting for %s\n", path_.c_str());
    }
}

Lines::~Lines()
{
    close_file();
    if (signals_ >= 0) {
        close(signals_);
    }
}

void Lines::close_file()
{
    if (file_ > STDIN_FILENO) {
        close(file_);
    }
    file_ = -1;
}

/** Opens the file; one that is not there stays closed where it is waited for. */
void Lines::open_file()
{
    file_ = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    if (file_ < 0 && !(follow_ && errno == ENOENT)) {
        throw BadUse("cannot read " + path_ + ": " + std::strerror(errno));
    }
}

/** Whether the name is another file's by now, or this file is shorter than what was read of it. */
bool Lines::is_replaced() const
{
    struct stat there = {};
    struct stat here = {};
    if (stat(path_.c_str(), &there) != 0) {
        return false; // renamed, and not made anew yet
    }
    return file_ < 0 || fstat(file_, &here) != 0 || there.st_ino != here.st_ino ||
           there.st_dev != here.st_dev || there.st_size < lseek(file_, 0, SEEK_CUR);
}

bool Lines::take_line(std::string& line)
{
    const auto end = buffer_.find('\n', scanned_);
    if (end == std::string::npos) {
        scanned_ = buffer_.size();
        return false;
    }
    line.assign(buffer_, taken_, end - taken_);
    taken_ = scanned_ = end + 1;
    return true;
}

bool Lines::take_rest(std::string& line)
{
    line.assign(buffer_, taken_);
    buffer_.clear();
    taken_ = scanned_ = 0;
    return !line.empty();
}

/** Reads some more; false at the end of the file, for the time being. */
bool Lines::fill()
{
    constexpr std::size_t CHUNK = 65536;
    buffer_.erase(0, taken_);
    scanned_ -= taken_;
    taken_ = 0;
    const auto size = buffer_.size();
    buffer_.resize(size + CHUNK);
    ssize_t got = 0;
    do {
        got = file_ < 0 ? 0 : read(file_, buffer_.data() + size, CHUNK);
    } while (got < 0 && errno == EINTR);
    const int error = errno;
    buffer_.resize(size + static_cast<std::size_t>(got > 0 ? got : 0));
    if (got < 0) {
        throw BadUse(
            "cannot read " + (is_input_ ? "standard input" : path_) + ": " + std::strerror(error)
        );
    }
    return got > 0;
}

/** Waits for a signal, or for standard input. */
Lines::Event Lines::wait(int milliseconds) const
{
    std::array<pollfd, 2> waited = {
        {{signals_, POLLIN, 0}, {is_input_ ? STDIN_FILENO : -1, POLLIN, 0}}};
    if (poll(waited.data(), waited.size(), milliseconds) <= 0) {
        return Event::None;
    }
    return waited[0].revents != 0 ? Event::Signal : Event::Input;
}

/** Reads on in what may grow, if there is something to read; Event::None: there was not. */
Lines::Event Lines::read_on()
{
    Event event = wait(is_input_ ? PAUSE_MILLISECONDS : 0);
    if (event == Event::Signal || (is_input_ && event == Event::None)) {
        return event;
    }
    if (fill()) {
        return Event::Input;
    }
    return is_input_ ? Event::Signal : wait(PAUSE_MILLISECONDS);
}

Lines::Next Lines::next(std::string& line)
{
    while (!take_line(line)) {
        if (ended_) {
            return take_rest(line) ? Next::Line : Next::End;
        }
        if (!is_input_ && !follow_) {
            ended_ = !fill();
            continue;
        }
        const Event event = read_on();
        ended_ = event == Event::Signal;
        if (event != Event::None) {
            pauses_ = 0;
        } else if (!is_input_ && is_replaced() && !fill()) {
            close_file();
            open_file();
            if (take_rest(line)) {
                return Next::Line;
            }
        } else if (++pauses_ % PAUSES_UNTIL_QUIET == 0) {
            if (!take_rest(line)) {
                return Next::Quiet;
            }
            --pauses_;
            return Next::Line;
        }
    }
    return Next::Line;
}
