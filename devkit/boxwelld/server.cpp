#include "devkit/boxwelld/server.h"

#include "devkit/boxwelld/orders.h"
#include "devkit/boxwelld/transactions.h"
#include "devkit/boxwelld/transcript.h"
#include "devkit/bwdclient/frame.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

/** What a request comes to: a reply, none, or a connection that ends without an answer. */
struct Outcome {
    std::optional<std::string> reply;
    bool answered = true;
};

int join(decltype(&connect) call, const Fd& socket, const std::string& path)
{
    sockaddr_un address;
    if (frame_address(path.c_str(), &address) != 0) {
        throw_errno(path);
    }
    return call(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

/** The listening socket. Its name appears once it listens, and goes when the daemon does. */
class Listener {
  public:
    explicit Listener(const std::string& path)
        : path_(path), socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        if (join(connect, socket_, path) == 0 || errno == EAGAIN) {
            throw Refusal(path + ": a daemon is running already");
        }
        const std::string unready = path + ".new"; // either name may be left by one that was killed
        unlink(unready.c_str());
        if (join(bind, socket_, unready) != 0 || listen(socket_.get(), SOMAXCONN) != 0 ||
            rename(unready.c_str(), path.c_str()) != 0) {
            throw_errno(path);
        }
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { unlink(path_.c_str()); }

    int get() const { return socket_.get(); }

  private:
    std::string path_;
    Fd socket_;
};

/** SIGTERM and SIGINT as a descriptor that becomes readable. */
Fd end_signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return Fd(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

Outcome follow(Store& store, const Order& order, const std::string& request)
{
    if (order.kind == "refuse") {
        return {refuse(request, order.text)};
    }
    if (order.kind == "refuse-bare") {
        return {refuse(request, std::nullopt)};
    }
    if (order.kind == "reply") {
        return {order.text};
    }
    if (order.kind == "cut") {
        return {carry_out(store, request).substr(0, std::stoul(order.text))};
    }
    return {std::nullopt, order.kind == "no-reply"};
}

void report(const std::exception& failure)
{
    std::fprintf(stderr, "boxwelld: %s\n", one_line(failure.what()).c_str());
}

void record(const Paths& paths, const Exchange& exchange)
{
    try {
        append_to_transcript(paths, exchange);
    } catch (const std::exception& failure) { // what is done is answered all the same
        report(failure);
    }
}

Outcome answer(Store& store, const Paths& paths, const std::string& request)
{
    const std::optional<Order> order = take_order(store);
    Outcome outcome = order ? follow(store, *order, request) : Outcome{carry_out(store, request)};
    record(
        paths, {request, outcome.reply, order ? std::optional(order->to_string()) : std::nullopt}
    );
    if (order && order->kind == "die") {
        raise(SIGKILL);
    }
    return outcome;
}

void serve_client(Store& store, const Paths& paths, const Fd& client, int timeout_ms)
{
    char* bytes = nullptr;
    std::uint32_t length = 0;
    if (frame_receive(client.get(), &bytes, &length, frame_deadline(timeout_ms)) != 0) {
        throw_errno("a request was not received");
    }
    const Text text(bytes);
    if (!text) {
        throw Refusal("a request was not received: it has no text");
    }
    const Outcome outcome = answer(store, paths, std::string(text.get(), length));
    if (!outcome.answered) {
        return;
    }
    const char* reply = outcome.reply ? outcome.reply->data() : nullptr;
    const auto reply_length = static_cast<std::uint32_t>(outcome.reply.value_or("").size());
    if (frame_send(client.get(), reply, reply_length, frame_deadline(timeout_ms)) != 0) {
        throw_errno("a reply was not sent");
    }
}

} // namespace

void serve(const Paths& paths, int client_timeout_ms)
{
    const Fd signals = end_signals();
    Store store(paths);
    store.change([] {}); // passwd and group may be others than they were
    const Listener listener(paths.socket);
    for (;;) {
        pollfd ready[] = {{signals.get(), POLLIN, 0}, {listener.get(), POLLIN, 0}};
        if (poll(ready, 2, -1) < 0 && errno != EINTR) {
            throw_errno("poll");
        }
        if (ready[0].revents != 0) {
            return;
        }
        const Fd client(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (client.get() < 0) {
            continue;
        }
        try {
            serve_client(store, paths, client, client_timeout_ms);
        } catch (const std::exception& failure) { // this client's misfortune, not the daemon's
            report(failure);
        }
    }
}
