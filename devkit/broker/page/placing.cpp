#include "devkit/broker/page/placing.h"

#include "devkit/broker/page/transaction_text.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace {

/** The kind of request that a unit makes or speaks of. */
constexpr struct {
    const char* unit;
    const char* kind;
    bool named; // whether only of the account that the statement names
} REQUESTS[] = {
    {"access.cpp", "query User_Collection", true},
    {"add_user.cpp", "add User", false},
    {"cloud_owner.cpp", "set CloudOwner", false},
    {"delete_user.cpp", "delete User", false},
    {"query_user.cpp", "query User_Collection", false},
    {"remote_user.cpp", "add User:Remote:App", false},
    {"remote_user.cpp", "delete User:Remote:App", false},
    {"update_user.cpp", "set User_Collection", false},
};

using Calls = std::vector<RecordedCall>;

/** The first call from `begin` on that the statement may be of, one of an account that it names
 * before others. */
Calls::const_iterator
call_of(const RecordedStatement& statement, Calls::const_iterator begin, Calls::const_iterator end)
{
    const auto first = [&](bool named) {
        return std::find_if(begin, end, [&](const RecordedCall& call) {
            const std::string request = call.request.value_or("");
            const std::string subject = subject_of(request);
            const bool is_named =
                !subject.empty() && statement.text.find(subject) != std::string::npos;
            return std::any_of(std::begin(REQUESTS), std::end(REQUESTS), [&](const auto& known) {
                return statement.unit == known.unit && kind_of(request) == known.kind &&
                       (is_named || (!named && !known.named));
            });
        });
    };
    const auto named = first(true);
    return named != end ? named : first(false);
}

} // namespace

std::vector<std::size_t> places_of(const RecordedCommand& command)
{
    const Calls& calls = command.calls;
    std::vector<std::size_t> places;
    std::size_t made = 0;                       // of the calls, up to here
    std::set<std::pair<std::string, int>> said; // at the last of them
    for (const RecordedStatement& statement :
         command.statements.value_or(std::vector<RecordedStatement>())) {
        const bool again = said.contains({statement.unit, statement.line});
        const auto begin = static_cast<std::ptrdiff_t>(made > 0 && !again ? made - 1 : made);
        const auto call = call_of(statement, calls.begin() + begin, calls.end());
        if (call != calls.end() && call - calls.begin() + 1 != static_cast<std::ptrdiff_t>(made)) {
            made = static_cast<std::size_t>(call - calls.begin()) + 1;
            said.clear();
        }
        said.emplace(statement.unit, statement.line);
        places.push_back(made);
    }
    return places;
}
