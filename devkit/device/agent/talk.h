/**
 * What device-exec, outside of a device that stays, and device-agent, inside it, say to each other
 * on the socket "agent.sock" in the device's state folder: the client's standard streams as
 * descriptors, a frame with the request, then signals one way and answers the other. Failures are
 * thrown: std::system_error.
 */
#pragma once

#include "devkit/boxwelld/files.h"

#include <optional>
#include <string>
#include <vector>

/** What a process exits with that cannot do what it was asked for. */
constexpr int CANNOT = 125;

/** How long either side waits for the other where nothing of the device's own takes time. */
constexpr int TALK_MS = 20000;

struct Request {
    std::string kind; // "run", "wait" until the device is there, "stop"
    // Of "run":
    std::string folder{};
    std::vector<std::string> command{};
    std::vector<std::string> environment{};
    std::vector<Fd> streams{}; // the client's standard input, output and error, at the agent
};

enum class Sort : unsigned char {
    Terminal = 't', // with the leading side of the pseudo-terminal that the command has
    Status = 's',   // the last one
};

struct Answer {
    Sort sort;
    int status = 0;
    Fd terminal{-1};
};

/** A listening socket in `folder`, however long its path is; one that was left there is replaced.
 */
Fd listen_in(const std::string& folder);

/** A connection to the agent that listens in `folder`. */
Fd connect_in(const std::string& folder);

/** Sends the request and this process's standard streams. */
void send_request(const Fd& socket, const Request& request);

/** Receives what send_request() sends; nothing from a client that says nothing sensible. */
std::optional<Request> receive_request(const Fd& socket);

/** Whether the client is still there to get it; `terminal`: a descriptor to pass on, -1 for none.
 */
bool send_answer(const Fd& socket, Sort sort, int status, int terminal = -1);

/** The next answer; nothing when the agent is gone. */
std::optional<Answer> receive_answer(const Fd& socket);
