#include "devkit/device/agent/conversation.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>

namespace {

/** What a process in the background may have to say once the command has ended is not waited for.
 */
constexpr int LAST_WORDS_MS = 100;

/** Whether all of it could be written to the standard output. */
bool write_out(const char* bytes, std::size_t length)
{
    while (length > 0) {
        const ssize_t written = write(STDOUT_FILENO, bytes, length);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes += written < 0 ? 0 : written;
        length -= written < 0 ? 0 : static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace

Conversation::Conversation(Fd agent)
    : agent_(std::move(agent)),
      signals_(block_signals(
          {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT, SIGWINCH, SIGPIPE}
      ))
{
}

int Conversation::hold(const Request& request)
{
    send_request(agent_, request);
    for (bool goes_on = true; goes_on;) {
        const short to_write = keys_.empty() ? 0 : POLLOUT;
        const int keyboard = raw_ && keys_.empty() ? STDIN_FILENO : -1;
        std::array<pollfd, 4> events{
            {{agent_.get(), POLLIN, 0},
             {signals_.get(), POLLIN, 0},
             {terminal_.get(), static_cast<short>(POLLIN | to_write), 0},
             {keyboard, POLLIN, 0}}};
        if (poll(events.data(), events.size(), -1) < 0) {
            continue;
        }
        if ((events[2].revents & POLLOUT) != 0) {
            write_keys();
        }
        if ((events[2].revents & ~POLLOUT) != 0 && !show(0)) {
            terminal_ = Fd(-1);
        }
        if (events[3].revents != 0) {
            read_keys();
        }
        pass_on_signals();
        goes_on = events[0].revents == 0 || hear_agent();
    }
    show_the_rest();
    return status_;
}

/** Whether there is more to come. */
bool Conversation::hear_agent()
{
    std::optional<Answer> answer = receive_answer(agent_);
    if (!answer) {
        raw_.reset();
        std::fputs("device: the device has ended\n", stderr);
        return false;
    }
    if (answer->sort == Sort::Status) {
        status_ = answer->status;
        return false;
    }
    terminal_ = std::move(answer->terminal);
    fcntl(terminal_.get(), F_SETFL, O_NONBLOCK);
    raw_ = std::make_unique<RawTerminal>();
    return true;
}

void Conversation::pass_on_signals()
{
    for (int signal = 0; (signal = next_signal(signals_)) != 0;) {
        const auto number = static_cast<unsigned char>(signal);
        if (signal == SIGWINCH) {
            if (raw_) {
                take_size(terminal_, STDIN_FILENO);
            }
        } else if (signal != SIGPIPE) {
            send(agent_.get(), &number, sizeof number, MSG_NOSIGNAL);
        }
        if (signal == SIGTSTP && !raw_) {
            raise(SIGSTOP);
        }
    }
}

void Conversation::read_keys()
{
    std::array<char, 4096> keys{};
    const ssize_t got = read(STDIN_FILENO, keys.data(), keys.size());
    if (got > 0) {
        keys_.assign(keys.data(), static_cast<std::size_t>(got));
        write_keys();
    } else if (got == 0 || errno != EINTR) { // the terminal is gone: so is who sat at it
        raw_.reset();
        const unsigned char hang_up = SIGHUP;
        send(agent_.get(), &hang_up, sizeof hang_up, MSG_NOSIGNAL);
    }
}

void Conversation::write_keys()
{
    const ssize_t written = write(terminal_.get(), keys_.data(), keys_.size());
    if (written > 0) {
        keys_.erase(0, static_cast<std::size_t>(written));
    } else if (errno != EAGAIN && errno != EINTR) {
        keys_.clear();
    }
}

/** Whether there was something to show, or may be later; `wait_ms` is how long to wait for it. */
bool Conversation::show(int wait_ms)
{
    std::array<char, 16384> text{};
    pollfd event = {terminal_.get(), POLLIN, 0};
    if (wait_ms > 0 && poll(&event, 1, wait_ms) <= 0) {
        return false;
    }
    const ssize_t got = read(terminal_.get(), text.data(), text.size());
    if (got > 0) {
        return write_out(text.data(), static_cast<std::size_t>(got));
    }
    return got < 0 && (errno == EAGAIN || errno == EINTR) && wait_ms == 0;
}

void Conversation::show_the_rest()
{
    while (terminal_.get() >= 0 && show(LAST_WORDS_MS)) {
    }
}
