#include "devkit/broker/page/placing.h"

#include "devkit/broker/page/transaction_text.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace {

/** The kind of request that a unit makes. */
constexpr struct {
    const char* unit;
    const char* kind;
} REQUESTS[] = {
    {"add_user.cpp", "add User"},
    {"cloud_owner.cpp", "set CloudOwner"},
    {"delete_user.cpp", "delete User"},
    {"query_user.cpp", "query User_Collection"},
    {"update_user.cpp", "set User_Collection"},
};

bool is_of(const std::string& unit, const RecordedCall& call)
{
    const std::string kind = call.request ? kind_of(*call.request) : "";
    if (unit == "remote_user.cpp") {
        return kind.ends_with(" User:Remote:App");
    }
    return std::any_of(std::begin(REQUESTS), std::end(REQUESTS), [&](const auto& request) {
        return unit == request.unit && kind == request.kind;
    });
}

} // namespace

std::vector<std::size_t> places_of(const RecordedCommand& command)
{
    const auto& calls = command.calls;
    std::vector<std::size_t> places;
    std::size_t made = 0;                       // of the calls, up to here
    std::set<std::pair<std::string, int>> said; // at the last of them
    for (const RecordedStatement& statement :
         command.statements.value_or(std::vector<RecordedStatement>())) {
        const bool again = said.contains({statement.unit, statement.line});
        const auto begin =
            calls.begin() + static_cast<std::ptrdiff_t>(made > 0 && !again ? made - 1 : made);
        const auto call = std::find_if(begin, calls.end(), [&](const RecordedCall& one) {
            return is_of(statement.unit, one);
        });
        if (call != calls.end() && call - calls.begin() + 1 != static_cast<std::ptrdiff_t>(made)) {
            made = static_cast<std::size_t>(call - calls.begin()) + 1;
            said.clear();
        }
        said.emplace(statement.unit, statement.line);
        places.push_back(made);
    }
    return places;
}
