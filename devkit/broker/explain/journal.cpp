#include "devkit/broker/explain/journal.h"

#include <array>
#include <charconv>
#include <ctime>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

std::string text_at(const Json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

/** A field's text; one that is no UTF-8 is an array of bytes. */
std::string bytes_of(const Json& value)
{
    if (value.is_string()) {
        return value.get<std::string>();
    }
    std::string text;
    for (const Json& byte : value.is_array() ? value : Json::array()) {
        text += byte.is_number_unsigned() ? static_cast<char>(byte.get<unsigned>() & 0xFFU) : '?';
    }
    return text;
}

/** Microseconds since 1970 as a time. */
std::string time_of(const std::string& microseconds)
{
    constexpr long long PER_SECOND = 1000000;
    long long count = 0;
    const char* const end = microseconds.data() + microseconds.size();
    std::from_chars(microseconds.data(), end, count);
    const auto seconds = static_cast<time_t>(count / PER_SECOND);
    tm utc = {};
    std::array<char, 32> text = {};
    if (count <= 0 || gmtime_r(&seconds, &utc) == nullptr) {
        return "";
    }
    strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &utc);
    return text.data();
}

} // namespace

std::optional<JournalRecord> journal_record(const std::string& line)
{
    if (!line.starts_with('{')) {
        return {};
    }
    const Json object = Json::parse(line, nullptr, false);
    if (!object.is_object() || !object.contains("MESSAGE")) {
        return {};
    }
    return JournalRecord{
        bytes_of(object.at("MESSAGE")), time_of(text_at(object, "__REALTIME_TIMESTAMP")),
        text_at(object, "_PID")};
}
