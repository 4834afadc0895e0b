#include "syscmd/daemon/exchange.h"

#include "common/mxl/reply.h"
#include "common/mxl/transport.h"
#include "common/result.h"
#include "liblst/owned.h"

namespace {

/** Logs what the operation says of a failure. */
Outcome fail(const Exchange& exchange, const Words& said)
{
    LOG_AS_AT(
        exchange.speaker, said.line, Error, "ERROR [syscmd:%s]%s", exchange.speaker.function,
        said.text
    );
    return Outcome::Failed;
}

/** Logs a text that passes by, where the operation shows it. */
void show(const Exchange& exchange, short line, const char* what, const char* text)
{
    if (line != 0) {
        LOG_AS_AT(exchange.speaker, line, Debug, "syscmd:%s=%s\n", what, text);
    }
}

/** Reads the outcome out of the reply. */
Outcome readOutcome(Answer& answer, const Exchange& exchange)
{
    AUTO_FREE char* status = nullptr;
    if (GetMXLStatus(&status, answer.reply) != SUCCESS) {
        return fail(exchange, exchange.unread);
    }
    if (strcmp(status, "success") == 0) {
        return Outcome::Done;
    }
    if (GetMXLErrorDetail(&answer.detail, answer.reply) != SUCCESS) {
        return fail(exchange, exchange.undetailed);
    }
    return Outcome::Refused;
}

} // namespace

void releaseAnswer(Answer* answer)
{
    free(answer->detail);
    free(answer->reply);
    free(answer->request);
}

Outcome ask(Answer& answer, const Exchange& exchange, char* request)
{
    answer.request = request;
    if (request == nullptr) {
        return fail(exchange, exchange.unformatted);
    }
    show(exchange, exchange.shown_request, "request", request);

    switch (deliver(&answer.reply, request)) {
    case Delivery::Answered:
        show(exchange, exchange.shown_reply, "respond", answer.reply);
        return readOutcome(answer, exchange);
    case Delivery::Unanswered:
        return fail(exchange, exchange.unanswered);
    case Delivery::Failed:
        break;
    }
    answer.reply = nullptr; // whatever the library left there is not ours to release
    return fail(exchange, exchange.unsent);
}
