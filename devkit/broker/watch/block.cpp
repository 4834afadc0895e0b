#include "devkit/broker/page/placing.h"
#include "devkit/broker/page/transaction_text.h"
#include "devkit/broker/table.h"
#include "devkit/broker/watch/watch.h"
#include "devkit/recording/characters.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

/** The time of day, UTC. */
std::string time_of_day(double seconds)
{
    const auto whole = static_cast<time_t>(std::floor(seconds));
    tm parts = {};
    gmtime_r(&whole, &parts);
    char text[32];
    std::snprintf(
        text, sizeof text, "%02d:%02d:%06.3f", parts.tm_hour, parts.tm_min,
        parts.tm_sec + (seconds - static_cast<double>(whole))
    );
    return text;
}

std::string milliseconds(std::int64_t microseconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", static_cast<double>(microseconds) / 1000);
    return text;
}

std::string outcome_of_call(const RecordedCall& call)
{
    if (call.result != 0) {
        return std::string("the call failed: ") + std::strerror(call.error);
    }
    return call.reply ? outcome_of(*call.reply) : "no reply";
}

std::string head_of(const RecordedCommand& command)
{
    std::string head = time_of_day(command.time);
    for (const std::string& word : command.words) {
        head += ' ' + (word.empty() ? "\"\"" : printable(word));
    }
    return head + (command.login ? ", as " + printable(*command.login) : ", without credentials") +
           '\n';
}

std::string answer_of(const RecordedCommand& command)
{
    const auto& answer = command.answer;
    if (!answer) {
        return "  no answer: the process ended\n";
    }
    const std::string response =
        answer->response ? '"' + printable(*answer->response) + '"' : "no response";
    return "  " + answer->code + ", " + response + ", " + milliseconds(answer->microseconds) + '\n';
}

/** Without the transactions in it, which stand beside it. */
std::string statement_line(const RecordedStatement& statement)
{
    std::string text = statement.text.substr(0, statement.text.find_last_not_of('\n') + 1);
    if (const std::size_t transaction = text.find("<?xml"); transaction != std::string::npos) {
        text.replace(transaction, std::string::npos, "...");
    }
    return "    " + statement.level + ' ' + statement.unit + ':' + std::to_string(statement.line) +
           ' ' + printable(text) + '\n';
}

} // namespace

std::string block_of(const RecordedCommand& command)
{
    const std::vector<std::size_t> places = places_of(command);
    std::string block = head_of(command);
    std::size_t next = 0; // of the statements
    const auto add_statements = [&](std::size_t calls_made) {
        for (; next < places.size() && places[next] <= calls_made; ++next) {
            block += statement_line((*command.statements)[next]);
        }
    };
    add_statements(0);
    for (std::size_t i = 0; i < command.calls.size(); ++i) {
        const RecordedCall& call = command.calls[i];
        block += "  > " + (call.request ? printable(summary_of(*call.request)) : "a long request") +
                 '\n';
        block += "  < " + printable(outcome_of_call(call)) + ", " +
                 milliseconds(call.microseconds) + '\n';
        add_statements(i + 1);
    }
    for (const FactChange& change : command.changes) {
        for (const std::string& line : for_people(change)) {
            block += "  " + printable(as_bytes(line)) + '\n';
        }
    }
    return block + answer_of(command) + '\n';
}
