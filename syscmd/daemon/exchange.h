/**
 * One exchange with the management daemon, written once: format the request, send it, read the
 * outcome. Operations differ in the words and lines of each failure, and in whether they show what
 * passes by; those are data.
 *
 *     AUTO_ANSWER Answer answer = {};
 *     switch (ask(answer, DELETION, String(DELETE_USER_MXL_TEXT, user_id))) {
 *     case Outcome::Done: …
 *     case Outcome::Refused: … answer.detail …
 *     case Outcome::Failed: … // said already
 *     }
 */
#pragma once

#include "common/log.h"

/** One fixed statement at ERROR: its line, and what it says behind "ERROR [syscmd:<function>]", the
 * line end included. */
struct Words {
    short line;
    const char* text;
};

/** What an operation says in an exchange. */
struct Exchange {
    Speaker speaker;         /**< of all these statements */
    Words unformatted;       /**< no memory for the request */
    Words unsent;            /**< the call of the client library failed */
    Words unanswered;        /**< the call brought no reply */
    Words unread;            /**< the reply's status could not be read */
    Words undetailed;        /**< the error detail could not be read */
    short shown_request = 0; /**< line of the statement at DEBUG that shows the request; 0: none */
    short shown_reply = 0;   /**< line of the one that shows the reply; 0: none */
};

/** What came of an exchange; null is what it did not get to. */
struct Answer {
    char* request;
    char* reply;
    char* detail; /**< the daemon's words when Refused, empty when it gave none */
};

/** Releases an answer at the end of the scope: detail, reply and request. */
#define AUTO_ANSWER [[gnu::cleanup(releaseAnswer)]]

/** The cleanup of AUTO_ANSWER. */
void releaseAnswer(Answer* answer);

/** What became of a request. */
enum class Outcome {
    Done,    /**< carried out */
    Refused, /**< not carried out */
    Failed,  /**< not known: logged */
};

/**
 * Sends a request and reads what the daemon made of it.
 *
 * @param answer    empty; receives request, reply and detail, the request in any case
 * @param exchange  what to log
 * @param request   the formatted request, from then on the answer's; null when there was no memory
 *                  for it
 */
Outcome ask(Answer& answer, const Exchange& exchange, char* request);
