#include "devkit/boxwelld/server.h"

#include "devkit/boxwelld/client.h"
#include "devkit/boxwelld/orders.h"
#include "devkit/boxwelld/stages.h"
#include "devkit/boxwelld/transactions.h"
#include "devkit/boxwelld/transcript.h"
#include "devkit/bwdclient/frame.h"
#include "devkit/change.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <list>
#include <vector>

namespace {

/** Those beyond wait in the socket's queue. */
constexpr std::size_t MOST_CLIENTS = 256;

/** What becomes of a client whose request has come. */
enum class Fate {
    Answered,
    Left, // the connection is closed
    Hung, // it stays open, and nothing comes
};

struct Outcome {
    std::optional<std::string> reply; // nothing: "done, without a reply" for who is answered
    Fate fate = Fate::Answered;
    int delay_ms = 0;
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
    if (order.kind == "delay") {
        return {carry_out(store, request), Fate::Answered, std::stoi(order.text)};
    }
    return {
        std::nullopt, order.kind == "no-reply" ? Fate::Answered
                      : order.kind == "hang"   ? Fate::Hung
                                               : Fate::Left};
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
    const Change change;
    const auto came = std::chrono::system_clock::now();
    const auto begin = std::chrono::steady_clock::now();
    take_stage_times(); // those of before are nobody's
    const std::optional<Order> order = take_order(store, request);
    Outcome outcome = order ? follow(store, *order, request) : Outcome{carry_out(store, request)};
    Exchange exchange = {
        request, outcome.reply,     order ? std::optional(order->to_string()) : std::nullopt, came,
        {},      take_stage_times()};
    if (outcome.fate == Fate::Answered) {
        exchange.answer_in = std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::steady_clock::now() - begin + std::chrono::milliseconds(outcome.delay_ms)
        );
    }
    record(paths, exchange);
    if (order && order->kind == "die") {
        raise(SIGKILL);
    }
    return outcome;
}

class Server {
  public:
    Server(const Paths& paths, int client_timeout_ms)
        : paths_(paths), store_(paths), client_timeout_ms_(client_timeout_ms)
    {
        store_.change([] {}); // passwd and group may be others than they were
        mend_transcript(paths_);
    }

    void run()
    {
        const Listener listener(paths_.socket);
        while (wait(listener)) {
            auto ready = polled_.begin() + FIRST_CLIENT;
            clients_.remove_if([&](Client& client) {
                return !goes_on(client, (ready++)->revents != 0);
            });
            if (polled_[LISTENER].revents != 0) {
                accept_from(listener);
            }
        }
    }

  private:
    enum {
        SIGNALS,
        LISTENER,
        FIRST_CLIENT
    };

    /** Waits until there is something to do; false: to end. */
    bool wait(const Listener& listener)
    {
        const bool room = clients_.size() < MOST_CLIENTS;
        polled_ = {{signals_.get(), POLLIN, 0}, {room ? listener.get() : -1, POLLIN, 0}};
        std::int64_t wake = INT64_MAX;
        for (const Client& client : clients_) {
            polled_.push_back({client.socket(), client.events(), 0});
            wake = std::min(wake, client.deadline());
        }
        const std::int64_t left = std::clamp<std::int64_t>(wake - frame_deadline(0), 0, INT_MAX);
        const int timeout = clients_.empty() ? -1 : static_cast<int>(left);
        if (poll(polled_.data(), polled_.size(), timeout) < 0 && errno != EINTR) {
            throw_errno("poll");
        }
        return polled_[SIGNALS].revents == 0;
    }

    void accept_from(const Listener& listener)
    {
        Fd client(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (client.get() >= 0) {
            clients_.emplace_back(std::move(client), client_timeout_ms_);
        }
    }

    /** Does what can be done for a client; whether it is to stay. */
    bool goes_on(Client& client, bool ready)
    {
        try {
            if (ready) {
                return step(client);
            }
            if (frame_deadline(0) < client.deadline()) {
                return true;
            }
            if (!client.is_held()) {
                client.give_up();
            }
            client.release();
            return !client.send();
        } catch (const std::exception& failure) { // this client's misfortune, not the daemon's
            report(failure);
            return false;
        }
    }

    bool step(Client& client)
    {
        if (client.is_held()) {
            return false; // it has gone
        }
        if (!client.is_answered()) {
            const std::optional<std::string> request = client.receive();
            if (!request) {
                return true;
            }
            const Outcome outcome = answer(store_, paths_, *request);
            if (outcome.fate == Fate::Left) {
                return false;
            }
            begin_reply(client, outcome);
        }
        return client.is_held() || !client.send();
    }

    static void begin_reply(Client& client, const Outcome& outcome)
    {
        if (outcome.fate == Fate::Hung) {
            client.hold_for_ever();
            return;
        }
        client.answer(outcome.reply);
        if (outcome.delay_ms > 0) {
            client.hold(outcome.delay_ms);
        }
    }

    Fd signals_ = end_signals();
    Paths paths_;
    Store store_;
    int client_timeout_ms_;
    std::list<Client> clients_;
    std::vector<pollfd> polled_; // signals, the listener, then the clients in their order
};

} // namespace

void serve(const Paths& paths, int client_timeout_ms)
{
    Server(paths, client_timeout_ms).run();
}
