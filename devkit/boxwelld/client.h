/** One client of the daemon: a request, then its reply, in steps that never wait. */
#pragma once

#include "devkit/boxwelld/files.h"

#include <cstdint>
#include <optional>
#include <string>

class Client {
  public:
    /** A client that has connected; each half of its exchange is to take `timeout_ms` at most. */
    Client(Fd socket, int timeout_ms);

    int socket() const { return socket_.get(); }
    /** What poll() is to wait for, and until when, in milliseconds of the monotonic clock. */
    short events() const;
    std::int64_t deadline() const { return deadline_; }

    /** Whether nothing is to be sent yet: until the deadline, or for ever. */
    bool is_held() const { return state_ == State::Held; }

    /** The request, once all of it has come. Throws when none can come any more. */
    std::optional<std::string> receive();

    /** Takes the reply, or "done, without a reply", that send() is to send. */
    void answer(const std::optional<std::string>& reply);
    /** Whether the reply is being sent. */
    bool is_answered() const { return state_ == State::Answered; }

    /** Keeps the reply back for so many milliseconds; then release() is due. */
    void hold(int delay_ms);
    /** Keeps the connection open, with nothing ever to send. */
    void hold_for_ever();
    /** Begins to send what was kept back. */
    void release();

    /** Sends of the reply what can be sent now; whether all of it is. Throws when it cannot be. */
    bool send();

    /** Throws that the time is over. */
    [[noreturn]] void give_up() const;

  private:
    enum class State {
        Asking,
        Held,
        Answered
    };

    const char* failure() const;
    std::size_t missing() const;

    Fd socket_;
    int timeout_ms_;
    std::int64_t deadline_;
    State state_ = State::Asking;
    std::string frame_; // what has come of the request's, or the reply's
    std::size_t sent_ = 0;
};
