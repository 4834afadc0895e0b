#include "syscmd/daemon/exchange.h"

#include "common/common.h"
#include "liblst/owned.h"

#include <cstring>

namespace {

/** Logs what the operation says of a failure; returns -1, the failure. */
int fail(const ExchangeWords& words, const Words& said)
{
    logStatement(
        LogLevel::Error, words.file, said.line, words.function, "ERROR [syscmd:%s]%s",
        words.function, said.text
    );
    return -1;
}

} // namespace

int takeRequest(char** request, const ExchangeWords& words, char* text)
{
    if (text == nullptr) {
        return fail(words, words.unformatted);
    }
    *request = text;
    return SUCCESS;
}

int sendRequest(char** reply, const ExchangeWords& words, const char* request)
{
    switch (deliver(reply, request)) {
    case Delivery::Answered:
        return SUCCESS;
    case Delivery::Unanswered:
        return fail(words, words.unanswered);
    case Delivery::Failed:
        break;
    }
    return fail(words, words.unsent);
}

Outcome readOutcome(char** detail, const ExchangeWords& words, const char* reply)
{
    AUTO_FREE char* status = nullptr;
    if (GetMXLStatus(&status, reply) != SUCCESS) {
        fail(words, words.unread);
        return Outcome::Failed;
    }
    if (strcmp(status, "success") == 0) {
        return Outcome::Done;
    }
    if (GetMXLErrorDetail(detail, reply) != SUCCESS) {
        fail(words, words.undetailed);
        return Outcome::Failed;
    }
    return Outcome::Refused;
}
