// The user query over many records, the last of which matches.
#include "bench/bare_log.h"
#include "bench/bare_parts.h"
#include "bench/count.h"
#include "bench/daemon.h"
#include "bench/families.h"
#include "bench/growth.h"
#include "syscmd/daemon/query_user.h"

#include <memory>

namespace {

std::string replyOf(std::size_t count, bool bare)
{
    std::string records;
    for (std::size_t i = 0; i < count; ++i) {
        records += userRecord("user" + std::to_string(i), i, bare);
    }
    return successReply(records);
}

/** The three results, as one text. */
std::string ours(const std::string& username)
{
    char* id = nullptr;
    char* group = nullptr;
    char* email = nullptr;
    GetUserData(&id, &group, &email, username.c_str());
    const Text owned[] = {Text(id), Text(group), Text(email)};
    return std::string(id) + " " + group + " " + email;
}

std::string floor(const std::string& username)
{
    const BareUser user = queryUser(username.c_str());
    return std::string(user.id.get()) + " " + user.group.get() + " " + user.email.get();
}

void benchCount(Frame& frame, std::size_t count, bool bare)
{
    const std::string name =
        "user query, " + std::to_string(count) + (bare ? " records without e-mail" : " records");
    if (!frame.wants(name)) {
        return;
    }
    const std::string reply = replyOf(count, bare);
    setReply(reply);
    const std::string username = "user" + std::to_string(count - 1);
    frame.compare(
        {.name = name,
         .against = "one pass, existence tests",
         .goal = 1.1,
         .rounds = count > 10000 ? std::size_t{7} : 0},
        [&] { return ours(username); }, [&] { return floor(username); }
    );
    const Allocations used = countAllocations([&] { ours(username); });
    frame.count(
        name + ", bytes", "the reply", static_cast<double>(used.bytes),
        static_cast<double>(reply.size()), 1.5
    );
    if (used.left != 0) {
        frame.fail(name + ": something is left behind");
    }
}

} // namespace

void benchUserQuery(Frame& frame)
{
    setLog(0, false); // each record that does not match is worth three statements
    const std::initializer_list<std::size_t> sizes = {100, 1000, 10000, 50000};
    for (const bool bare : {false, true}) {
        for (const std::size_t count : sizes) {
            if (!frame.checksOnly() || count <= 1000) {
                benchCount(frame, count, bare);
            }
        }
    }
    for (const bool bare : {false, true}) {
        frame.grows(
            bare ? "user query without e-mail" : "user query", 1000,
            [bare](std::size_t count) {
                return [reply = std::make_shared<std::string>(replyOf(count, bare)), count] {
                    setReply(*reply);
                    ours("user" + std::to_string(count - 1));
                };
            }
        );
    }
    setLog(3, false);
}

void growUserQuery(Growth& growth)
{
    setLog(0, false);
    growth.measure(
        "user-query", {10, 30, 100, 300, 1000, 3000, 10000, 50000},
        [](std::size_t count) {
            const auto reply = std::make_shared<std::string>(replyOf(count, false));
            const std::string last = "user" + std::to_string(count - 1);
            setReply(*reply);
            return Curves{
                curveOf("GetUserData", [reply, last] { return ours(last); }),
                curveOf("floor: one pass, existence tests", [reply, last] { return floor(last); })};
        }
    );
    setLog(3, false);
}
