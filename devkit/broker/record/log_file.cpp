#include "devkit/broker/record/log_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

namespace {

constexpr char LOG_FILE[] = "/var/log/shbroker.log";

} // namespace

std::optional<std::uint64_t> end_of_log()
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(LOG_FILE, error);
    return error ? std::nullopt : std::optional<std::uint64_t>(size);
}

std::vector<RecordedStatement> statements_behind(std::uint64_t end)
{
    std::ifstream file(LOG_FILE);
    if (end_of_log().value_or(0) >= end) {
        file.seekg(static_cast<std::streamoff>(end));
    }
    return statements_in({std::istreambuf_iterator<char>(file), {}});
}

std::vector<RecordedStatement> statements_in(const std::string& log)
{
    // A message without a line end is followed by the next one in the same line.
    static const std::regex prefix("[A-Z][a-z]{2} [ 0-9][0-9] [0-9]{4} [0-9:]{8} "
                                   "(ERROR|INFO|DEBUG):([^: ]{1,255}):([0-9]{1,9}) ");
    std::vector<RecordedStatement> statements;
    for (std::sregex_iterator at(log.begin(), log.end(), prefix), end; at != end; ++at) {
        const auto next = std::next(at);
        const auto from = static_cast<std::size_t>(at->position() + at->length());
        const auto to = next == end ? log.size() : static_cast<std::size_t>(next->position());
        statements.push_back(
            {at->str(1), at->str(2), std::stoi(at->str(3)), log.substr(from, to - from)}
        );
    }
    return statements;
}
