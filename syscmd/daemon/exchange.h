/**
 * One exchange with the management daemon, written once: format the request, send it, read the
 * outcome. Operations differ in the words and lines of each failure; those are data.
 *
 * The steps are separate because some operations log between them:
 *
 *     char* text = FORMAT_TEMPLATE(DELETE_USER_MXL, user_id);
 *     AUTO_FREE char* request = nullptr;
 *     if (takeRequest(&request, WORDS, text) != SUCCESS) return -1;
 *     AUTO_FREE char* reply = nullptr;
 *     if (sendRequest(&reply, WORDS, request) != SUCCESS) return -1;
 *     AUTO_FREE char* detail = nullptr;
 *     switch (readOutcome(&detail, WORDS, reply)) …
 *
 * Locals declared in this order are released as status, reply, request.
 */
#pragma once

#include "common/io.h"
#include "common/mxl/format_template.h"

/** One fixed log statement at ERROR: its source line, and what it says behind
 * "ERROR [syscmd:<function>]", the line end included. */
struct Words {
    short line;
    const char* text;
};

/** What an operation says about each failure of an exchange, in whose file and by which function.
 */
struct ExchangeWords {
    const char* file;     /**< base name of the operation's unit */
    const char* function; /**< name of the operation's function */
    Words unformatted;    /**< no memory for the request */
    Words unsent;         /**< the call of the client library failed */
    Words unanswered;     /**< the call brought no reply */
    Words unread;         /**< the reply's status could not be read */
    Words undetailed;     /**< the error detail could not be read */
};

/** How the daemon's reply reads. */
enum class Outcome {
    Done,    /**< carried out */
    Refused, /**< not carried out; the daemon's words are handed over */
    Failed,  /**< not known: logged */
};

/**
 * Takes a request that was formatted by FORMAT_TEMPLATE.
 *
 * @param request  receives the request, which the caller releases with free(); untouched on failure
 * @param words    what to log on failure
 * @param text     the formatted request, now the routine's; null when there was no memory for it
 * @return 0, or -1 when there is no text (logged)
 */
int takeRequest(char** request, const ExchangeWords& words, char* text);

/**
 * Sends a request and hands back its reply.
 *
 * @param reply    receives the reply, which the caller releases with free(); null after a failure
 * @param words    what to log on failure
 * @param request  the request
 * @return 0, or -1 when the call failed or brought no reply (logged)
 */
int sendRequest(char** reply, const ExchangeWords& words, const char* request);

/**
 * Reads whether the daemon carried the request out.
 *
 * @param detail  receives the daemon's words when Refused (empty when it gave none), which the
 * caller releases with free(); else untouched
 * @param words   what to log on failure
 * @param reply   the reply
 */
Outcome readOutcome(char** detail, const ExchangeWords& words, const char* reply);
