// The devkit's own parsers.
#include "devkit/boxwelld/account.h"
#include "devkit/boxwelld/orders.h"
#include "devkit/boxwelld/seed.h"
#include "devkit/boxwelld/show.h"
#include "devkit/boxwelld/transactions.h"
#include "devkit/boxwelld/xml.h"
#include "devkit/bwdclient/frame.h"
#include "tools/fuzz/targets.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

using nlohmann::json;

namespace {

constexpr char ACCOUNTS[] =
    R"({"groups": [{"name": "sky-hold", "id": 2001}, {"name": "admin", "id": 2000}], "cloud_owner": "alice",
    "accounts": [{"name": "alice", "group": "admin"}, {"name": "bob", "group": "sky-hold", "email": "b@x"}],
    "remote_users": [{"name": "bob"}]})";

Store& store()
{
    static const Paths paths = [] {
        std::filesystem::create_directories("/run/fuzz");
        std::ofstream("/run/fuzz/passwd").flush();
        std::ofstream("/run/fuzz/group").flush();
        return Paths{.state = "/run/fuzz", .socket = "", .passwd = "/run/fuzz/passwd", .group = "/run/fuzz/group"};
    }();
    static Store the_store(paths);
    static const int faster = the_store.database().exec("PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY");
    return (void(faster), the_store);
}

/** What the store shows, asked again where something was written since. */
const std::string& shown()
{
    static int written = -1;
    static std::string text;
    if (std::exchange(written, store().database().getTotalChanges()) != written) {
        text = show(store(), true);
    }
    return text;
}

/** The store as ACCOUNTS has it; what it shows then. */
const std::string& seeded()
{
    static const std::string initial = (seed(store(), ACCOUNTS), shown());
    if (shown() != initial) {
        seed(store(), ACCOUNTS);
    }
    return initial;
}

} // namespace

FUZZ(frames) // what arrives of a frame
{
    int ends[2];
    socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends);
    std::string sent = input.substr(0, 65536);
    if (sent.size() > 1 && sent[0] >= 0 && sent[0] < 4) {
        sent[0] = sent[1] = 0; // the memory for a large one takes its time
    }
    expectSame(std::to_string(write(ends[0], sent.data(), sent.size())), std::to_string(sent.size()), "sent");
    shutdown(ends[0], SHUT_WR);
    char* text = nullptr;
    std::uint32_t length = 0;
    const int result = frame_receive(ends[1], &text, &length, frame_deadline(1000));
    const bool is_protocol = result != 0 && errno == EPROTO;
    std::string actual = result == 0 && text != nullptr ? '=' + std::string(text, length) : std::to_string(result);
    actual += is_protocol ? "!" : "";
    free(text);

    std::string expected = "-1!";
    if (sent.size() >= 4) {
        std::uint32_t head = 0;
        std::memcpy(&head, sent.data(), 4);
        head = ntohl(head);
        expected = head == 0xffffffff ? "0" : head <= sent.size() - 4 ? '=' + sent.substr(4, head) : expected;
    }
    expectSame(actual, expected, "frame");
    close(ends[0]);
    close(ends[1]);
}

FUZZ(transactions) // a request's text
{
    const std::string& before = seeded();
    const std::string reply = carry_out(store(), input);
    const std::string status = between(between(reply, "<xs:response", "<"), "status=\"", "\">");
    expectSame(status == "success" ? "failure" : status, "failure", "status");
    parse_xml(reply); // throws where it is none
    expectSame(status == "success" ? before : shown(), before, "state");
}

FUZZ(orders) // KIND SKIP COUNT FOR on one byte; a line feed takes one by the request "", a tab by "x"
{
    struct Waiting {
        std::string kind;
        int skip;
        int count;
        std::string holds;
    };
    std::vector<Waiting> waiting;
    clear_orders(store());
    for (const char one : input.substr(0, 24)) {
        if (one != '\n' && one != '\t') {
            const Waiting& order =
                waiting.emplace_back(Waiting{std::string(1, one), one & 3, one >> 2 & 3, (one & 16) != 0 ? "x" : ""});
            place_order(store(), {order.kind, ""}, order.skip, order.count, order.holds);
            continue;
        }
        const std::string request = one == '\t' ? "x" : "";
        std::string expected = "none";
        bool is_taken = false;
        for (Waiting& order : waiting) {
            if (request.size() < order.holds.size()) {
                continue;
            }
            if (order.skip > 0) {
                --order.skip;
            } else if (!is_taken) {
                is_taken = true;
                expected = order.kind;
                order.count = order.count == 1 ? -1 : order.count > 1 ? order.count - 1 : 0;
            }
        }
        std::erase_if(waiting, [](const Waiting& order) { return order.count < 0; });
        const auto taken = take_order(store(), request);
        expectSame(taken ? taken->kind : "none", expected, "order");
    }
}

FUZZ(seed) // the state as JSON
{
    const std::string& before = seeded();
    try {
        seed(store(), input);
    } catch (const std::exception&) {
        expectSame(shown(), before, "state");
        return;
    }
    const std::string text = shown();
    const json accounts = json::parse(text)["accounts"];
    for (const json& given : json::parse(input).value("accounts", json::array())) {
        for (const json& account : accounts) {
            json with_given = account;
            account["name"] == given["name"] ? with_given.update(given) : void();
            with_given["member_of"] = account["member_of"]; // which is sorted, each once
            expectSame(account.dump(), with_given.dump(), "an account");
        }
    }
    seed(store(), text);
    expectSame(shown(), text, "shown and seeded");
}
