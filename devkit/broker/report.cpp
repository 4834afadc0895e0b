#include "devkit/broker/report.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

using Json = nlohmann::ordered_json;

constexpr struct {
    TTransactionCode code;
    const char* name;
} CODES[] = {
    {CODE_SUCCEED, "CODE_SUCCEED"},         {CODE_FAILED, "CODE_FAILED"},
    {CODE_ERR_NOTIMPL, "CODE_ERR_NOTIMPL"}, {CODE_ERR_NOLOAD, "CODE_ERR_NOLOAD"},
    {CODE_ERR_NOEXEC, "CODE_ERR_NOEXEC"},   {CODE_ERR_TIMEOUT, "CODE_ERR_TIMEOUT"},
    {CODE_NOREPLY, "CODE_NOREPLY"},         {CODE_ERR_INTERNAL, "CODE_ERR_INTERNAL"},
    {CODE_UNDEFINED, "CODE_UNDEFINED"},
};

} // namespace

std::string code_name(TTransactionCode code)
{
    const auto* found = std::find_if(std::begin(CODES), std::end(CODES), [code](const auto& entry) {
        return entry.code == code;
    });
    return found != std::end(CODES) ? found->name : "code " + std::to_string(code);
}

std::optional<std::string> response_of(const Answer& answer)
{
    std::optional<std::string> text;
    for (const std::string& line : answer.responses) {
        text = text ? *text + '\n' + line : line;
    }
    return text;
}

bool carried_out(const Answer& answer)
{
    return answer.code == CODE_SUCCEED || answer.code == CODE_NOREPLY;
}

std::string for_people(const Answer& answer)
{
    char time[32];
    std::snprintf(time, sizeof time, "%.1f ms", answer.milliseconds);
    const std::optional<std::string> response = response_of(answer);
    return code_name(answer.code) + ", " + (response ? '"' + *response + '"' : "no response") +
           ", " + time + '\n';
}

Json as_json(const Command& command, const Answer& answer)
{
    const auto& as = command.credentials;
    const std::optional<std::string> response = response_of(answer);
    return {
        {"operation", command.words.front()},
        {"parameters", std::vector(command.words.begin() + 1, command.words.end())},
        {"as", as ? Json(as->substr(0, as->find(':'))) : Json()},
        {"code", code_name(answer.code)},
        {"response", response ? Json(*response) : Json()},
        {"milliseconds", answer.milliseconds},
    };
}

std::string text_of(const Json& json)
{
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}
