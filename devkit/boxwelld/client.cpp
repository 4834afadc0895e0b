#include "devkit/boxwelld/client.h"

#include "devkit/boxwelld/account.h"
#include "devkit/bwdclient/frame.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>

Client::Client(Fd socket, int timeout_ms)
    : socket_(std::move(socket)), timeout_ms_(timeout_ms), deadline_(frame_deadline(timeout_ms))
{
}

short Client::events() const
{
    return static_cast<short>(
        state_ == State::Answered ? POLLOUT
        : state_ == State::Asking ? POLLIN
                                  : 0
    );
}

const char* Client::failure() const
{
    return state_ == State::Answered ? "a reply was not sent" : "a request was not received";
}

void Client::give_up() const
{
    errno = ETIMEDOUT;
    throw_errno(failure());
}

/** How many bytes are still to come, as far as it is known. */
std::size_t Client::missing() const
{
    if (frame_.size() < FRAME_HEAD_BYTES) {
        return FRAME_HEAD_BYTES - frame_.size();
    }
    const std::uint32_t length = frame_length(frame_.data());
    if (length == FRAME_NO_REPLY) {
        throw Refusal(std::string(failure()) + ": it has no text");
    }
    if (length > FRAME_MAX_BYTES) {
        errno = EPROTO;
        throw_errno(failure());
    }
    return FRAME_HEAD_BYTES + length - frame_.size();
}

std::optional<std::string> Client::receive()
{
    std::array<char, 65536> chunk;
    while (const std::size_t wanted = missing()) {
        const ssize_t got = recv(socket(), chunk.data(), std::min(wanted, chunk.size()), 0);
        if (got < 0 && errno == EAGAIN) {
            return std::nullopt;
        }
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            errno = got == 0 ? EPROTO : errno;
            throw_errno(failure());
        }
        frame_.append(chunk.data(), static_cast<std::size_t>(got));
    }
    return frame_.substr(FRAME_HEAD_BYTES);
}

void Client::answer(const std::optional<std::string>& reply)
{
    release();
    const std::string text = reply.value_or("");
    if (text.size() > FRAME_MAX_BYTES) {
        errno = EPROTO;
        throw_errno(failure());
    }
    frame_.resize(FRAME_HEAD_BYTES);
    frame_write_length(
        reply ? static_cast<std::uint32_t>(text.size()) : FRAME_NO_REPLY, frame_.data()
    );
    frame_ += text;
}

void Client::hold(int delay_ms)
{
    state_ = State::Held;
    deadline_ = frame_deadline(delay_ms);
}

void Client::hold_for_ever()
{
    state_ = State::Held;
    deadline_ = INT64_MAX;
}

void Client::release()
{
    state_ = State::Answered;
    deadline_ = frame_deadline(timeout_ms_);
}

bool Client::send()
{
    while (sent_ < frame_.size()) {
        const ssize_t sent =
            ::send(socket(), frame_.data() + sent_, frame_.size() - sent_, MSG_NOSIGNAL);
        if (sent < 0 && errno == EAGAIN) {
            return false;
        }
        if (sent < 0 && errno != EINTR) {
            throw_errno(failure());
        }
        sent_ += sent < 0 ? 0 : static_cast<std::size_t>(sent);
    }
    return true;
}
