#include "devkit/boxwelld/transcript.h"

#include "devkit/boxwelld/account.h"
#include "devkit/boxwelld/markup.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using Json = nlohmann::ordered_json;

std::string dump(const Json& json, int indent)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

Json optional(const std::optional<std::string>& text)
{
    return text ? Json(*text) : Json();
}

std::string for_people(const Json& exchange)
{
    std::string text = "--- " + std::to_string(exchange["n"].get<std::size_t>()) + '\n';
    if (!exchange["order"].is_null()) {
        text += "ordered: " + exchange["order"].get<std::string>() + '\n';
    }
    text += broken_at_tags(exchange["request"]);
    text += exchange["reply"].is_null() ? "(no reply)\n" : broken_at_tags(exchange["reply"]);
    return text;
}

} // namespace

void append_to_transcript(const Paths& paths, const Exchange& exchange)
{
    const std::string line = dump(
                                 {{"request", exchange.request},
                                  {"reply", optional(exchange.reply)},
                                  {"order", optional(exchange.order)}},
                                 -1
                             ) +
                             '\n';
    const Fd file = open_file(paths.transcript(), O_WRONLY | O_CREAT | O_APPEND);
    if (write(file.get(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        throw_errno(paths.transcript());
    }
}

void clear_transcript(const Paths& paths)
{
    open_file(paths.transcript(), O_WRONLY | O_CREAT | O_TRUNC);
}

std::string transcript(const Paths& paths, std::size_t from, bool json)
{
    Json exchanges = Json::array();
    std::string text;
    std::istringstream lines(
        std::filesystem::exists(paths.transcript()) ? read_text(paths.transcript()) : ""
    );
    std::size_t number = 1;
    for (std::string line; std::getline(lines, line); ++number) {
        if (number < from) {
            continue;
        }
        Json exchange = {{"n", number}};
        exchange.update(Json::parse(line));
        text += for_people(exchange);
        exchanges.push_back(std::move(exchange));
    }
    return json ? dump(exchanges, 2) + '\n' : text;
}
