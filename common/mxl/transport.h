/** Handing requests to the management daemon. */
#pragma once

/** What became of one call of the client library. */
enum class Delivery {
    Answered,   /**< the daemon's reply is there */
    Failed,     /**< the call failed; what it left of a reply is nobody's to release */
    Unanswered, /**< the call succeeded, without a reply */
};

/**
 * Hands one request to the daemon and waits for its reply. Logs nothing.
 *
 * @param reply    null beforehand; receives the reply when Answered, which the caller releases with
 *                 free()
 * @param request  the request; not null
 */
Delivery deliver(char** reply, const char* request);

/**
 * Sends one request and hands back its reply; a failed exchange is the caller's to log.
 *
 * @param respond  null beforehand, it is not cleared here; receives the reply, which the caller
 *                 releases with free() after success only
 * @param request  the request
 * @return 0, or -1 when the call failed, brought no reply, or an argument is null (logged)
 */
int SendMXLtoBWD(char** respond, const char* request);
