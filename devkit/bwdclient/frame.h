/**
 * The frames that the client library and the daemon exchange over a Unix stream socket: a length
 * of four bytes, most significant first, then as many bytes of text. One request and one answer a
 * connection. The length FRAME_NO_REPLY, with nothing behind it, answers "done, without a reply".
 *
 * Conventions:
 *  - Descriptors are non-blocking; every wait ends at a deadline.
 *  - The result is 0, or -1 with errno: ETIMEDOUT at the deadline, EPROTO for a frame that is cut
 *    short or too long, ENOMEM, or what the system call gave.
 *  - No signal is raised by a peer that has gone; interrupted calls are taken up again.
 */
#pragma once

#include <sys/un.h>

#include <cstdint>

/** The longest text, in bytes: far above any reply, far below what harms the desk. */
constexpr std::uint32_t FRAME_MAX_BYTES = 64U << 20U;
constexpr std::uint32_t FRAME_NO_REPLY = UINT32_MAX;
constexpr unsigned FRAME_HEAD_BYTES = 4;

/** The daemon's socket where BOXWELLD_SOCKET does not name another. */
#define BOXWELLD_DEFAULT_SOCKET "/run/boxwelld.sock"

/** The moment, in milliseconds of the monotonic clock, that lies `timeout_ms` ahead. */
std::int64_t frame_deadline(std::int64_t timeout_ms);

/** Fills in the address of the socket at `path`; ENAMETOOLONG when it does not fit (107 bytes). */
int frame_address(const char* path, sockaddr_un* address);

/** The length that a frame's first FRAME_HEAD_BYTES bytes tell. */
std::uint32_t frame_length(const char* head);

/** Writes FRAME_HEAD_BYTES bytes. */
void frame_write_length(std::uint32_t length, char* head);

/** Sends a frame of `length` bytes, at most FRAME_MAX_BYTES; a null `text` says "no reply". */
int frame_send(int fd, const char* text, std::uint32_t length, std::int64_t deadline);

/**
 * Receives a frame. `*text` becomes a newly allocated NUL-terminated text, which the caller
 * releases with free(), or null for "no reply"; `*length` its bytes. Both are set only on success.
 */
int frame_receive(int fd, char** text, std::uint32_t* length, std::int64_t deadline);
