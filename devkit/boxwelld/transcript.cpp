#include "devkit/boxwelld/transcript.h"

#include "devkit/boxwelld/account.h"
#include "devkit/boxwelld/markup.h"

#include <fcntl.h>
#include <unistd.h>

#include <ctime>
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

/** "2026-11-24T16:13:12.345Z". */
std::string iso_time(std::chrono::system_clock::time_point moment)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
    const auto rest = std::chrono::floor<std::chrono::milliseconds>(moment - seconds);
    const std::time_t time = std::chrono::system_clock::to_time_t(seconds);
    tm utc{};
    gmtime_r(&time, &utc);
    char text[64];
    std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>(rest.count()));
    return text;
}

Json milliseconds(const std::optional<std::chrono::microseconds>& time)
{
    return time ? Json(std::chrono::duration<double, std::milli>(*time).count()) : Json();
}

Json stages(const StageTimes& times)
{
    Json object;
    for (std::size_t at = 0; at < times.size(); ++at) {
        object[STAGES[at]] = std::chrono::duration<double, std::milli>(times[at]).count();
    }
    return object;
}

/** ", 2026-11-24 16:13:12.345 UTC, 0.4 ms", as far as it is known. */
std::string times_for_people(const Json& exchange)
{
    std::string text;
    if (exchange["time"].is_string()) {
        text = ", " + exchange["time"].get<std::string>();
        text.replace(text.find('T'), 1, " ").replace(text.size() - 1, 1, " UTC");
    }
    if (exchange["milliseconds"].is_number()) {
        char time[32];
        std::snprintf(time, sizeof time, ", %.1f ms", exchange["milliseconds"].get<double>());
        text += time;
    }
    return text;
}

std::string for_people(const Json& exchange)
{
    std::string text = "--- " + std::to_string(exchange["n"].get<std::size_t>()) +
                       times_for_people(exchange) + '\n';
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
                                 {{"time", iso_time(exchange.came)},
                                  {"milliseconds", milliseconds(exchange.answer_in)},
                                  {"stages", stages(exchange.stages)},
                                  {"request", exchange.request},
                                  {"reply", optional(exchange.reply)},
                                  {"order", optional(exchange.order)}},
                                 -1
                             ) +
                             '\n';
    const Fd file = open_file(paths.transcript(), O_WRONLY | O_CREAT | O_APPEND);
    if (write(file.get(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        const int error = errno;
        mend_transcript(paths);
        errno = error;
        throw_errno(paths.transcript());
    }
}

void mend_transcript(const Paths& paths)
{
    if (!std::filesystem::exists(paths.transcript())) {
        return;
    }
    const std::size_t end = read_text(paths.transcript()).rfind('\n') + 1; // none: 0
    std::filesystem::resize_file(paths.transcript(), end);
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
        if (number < from || lines.eof()) { // the end of a line that is being written is missing
            continue;
        }
        Json exchange = {
            {"n", number}, {"time", nullptr}, {"milliseconds", nullptr}, {"stages", nullptr}};
        exchange.update(Json::parse(line));
        text += for_people(exchange);
        exchanges.push_back(std::move(exchange));
    }
    return json ? dump(exchanges, 2) + '\n' : text;
}
