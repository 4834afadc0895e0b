/** Measures where the time of a command on the desk goes, from the broker's start to the daemon's
 * reply; docs/performance.md. Runs on a private device. */
#include "bench/desk_calls.h"
#include "bench/desk_daemon.h"
#include "common/mxl/bwdclient.h"
#include "devkit/boxwelld/files.h"
#include "devkit/broker/plugin.h"

#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

const Paths PATHS{.socket = "/run/boxwelld.sock"};
constexpr int STARTS = 20; // of a broker

using Clock = std::chrono::steady_clock;

double microseconds_since(Clock::time_point begin)
{
    return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

double quantile(std::vector<double> values, double part)
{
    if (values.empty()) {
        return 0;
    }
    const auto at = static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + at, values.end());
    return values[static_cast<std::size_t>(at)];
}

/** One command after the other; the account of a round comes, is changed and goes. */
constexpr struct Kind {
    const char* name;
    bool daemon_goal; // counts for the daemon's percentiles
} KINDS[] = {
    {"adduser", true},           {"query", true},
    {"updateuser", true},        {"addremoteuser", false},
    {"initlocalsession", false}, {"deleteuser", true},
};

std::vector<std::string> words_of(const std::string& kind, int round, const std::string& hash)
{
    const std::string name = "w" + std::to_string(round);
    const std::string renamed = "v" + std::to_string(round) + "@example.com";
    const std::map<std::string, std::vector<std::string>> words = {
        {"adduser", {"adduser", name, hash, name + "@example.com"}},
        {"updateuser", {"updateuser", name, hash, renamed, name + "-p2p"}},
        {"addremoteuser", {"addremoteuser", name + "-p2p"}},
        {"initlocalsession", {"initlocalsession", "alice", "desk", "1"}},
        {"deleteuser", {"deleteuser", renamed, name + "-p2p"}},
    };
    return words.at(kind);
}

/** What a kind of command took, a value each time. */
struct Series {
    std::map<std::string, std::vector<double>> rows;
    std::vector<double> daemon;
    std::vector<double> bytes;
};

constexpr const char* ROWS[] = {
    "in the plug-in",        "  look-ups", "  transactions",         "  journal", "  log file",
    "  tools of the device", "  its own",  "the daemon (processor)", "  request", "  database",
    "  passwd and group",    "  reply",    "  socket, transcript",
};
constexpr std::size_t FIRST_CALL = 1;
constexpr std::size_t OWN = FIRST_CALL + static_cast<std::size_t>(Calls::Count);
constexpr std::size_t DAEMON = OWN + 1;
constexpr std::size_t REST = DAEMON + 1 + std::size(STAGES);

void note(Series& series, double whole, const CallTimes& calls, const Spent& spent)
{
    std::array<double, std::size(ROWS)> values{whole};
    values[OWN] = whole;
    for (std::size_t at = 0; at < calls.size(); ++at) {
        values[FIRST_CALL + at] = calls[at];
        values[OWN] -= calls[at];
    }
    values[DAEMON] = values[REST] = spent.microseconds;
    for (std::size_t at = 0; at < spent.stages.size(); ++at) {
        values[DAEMON + 1 + at] = spent.stages[at];
        values[REST] -= spent.stages[at];
    }
    for (std::size_t at = 0; at < values.size(); ++at) {
        series.rows[ROWS[at]].push_back(values[at]);
    }
    series.daemon.push_back(spent.microseconds);
    series.bytes.push_back(spent.bytes);
}

void seed(int accounts)
{
    nlohmann::json state = {
        {"groups", {{{"name", "admin"}}, {{"name", "sky-hold"}}, {{"name", "share"}}}},
        {"accounts", {{{"name", "alice"}, {"group", "admin"}, {"email", "alice@example.com"}}}},
        {"cloud_owner", "alice"}};
    for (int number = 1; number < accounts; ++number) {
        const std::string name = "user" + std::to_string(number);
        state["accounts"].push_back(
            {{"name", name}, {"group", "sky-hold"}, {"email", name + "@example.com"}}
        );
    }
    const std::unique_ptr<FILE, int (*)(FILE*)> command(popen("boxwelld seed -", "we"), pclose);
    const std::string text = state.dump();
    if (!command || std::fwrite(text.data(), 1, text.size(), command.get()) != text.size()) {
        throw std::runtime_error("boxwelld takes no seed");
    }
}

/** The query that adduser begins with. */
bool ask_for(const std::string& name)
{
    std::string request =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><xs:mxl"
        " xmlns:xs=\"http://nas.example.com/protocol/transaction/MXLSchema-0.9\""
        " xmlns=\"urn:varden:nas:boxwelld\" src=\"dpv_1\" dst=\"nas\"><xs:transaction id=\"trid\">"
        "<xs:query id=\"opid\" resource-id=\"\" resource-type=\"User_Collection\"><xs:criterion>"
        "<xs:equal property=\"/User/User_Name/\"><xs:value><![CDATA[" +
        name + "]]></xs:value></xs:equal></xs:criterion></xs:query></xs:transaction></xs:mxl>";
    char* reply = nullptr;
    int length = 0;
    const int result = process_request_bwdclient(
        request.data(), static_cast<int>(request.size()), &reply, &length
    );
    const std::unique_ptr<char, decltype(&std::free)> text(reply, std::free);
    return result == 0 && text && std::string(text.get()).find("<User_Id>") != std::string::npos;
}

bool carry_out(const Plugin& plugin, const std::string& kind, int round, const std::string& hash)
{
    if (kind == "query") {
        return ask_for("w" + std::to_string(round));
    }
    return plugin.run({words_of(kind, round, hash), "alice:", 3}).code == CODE_SUCCEED;
}

/** Microseconds from a broker's start to its end, the median. */
double broker_takes(std::vector<const char*> arguments)
{
    arguments.push_back(nullptr);
    std::vector<double> times;
    for (int start = 0; start < STARTS; ++start) {
        const auto begin = Clock::now();
        std::fflush(stdout);
        const pid_t broker = fork();
        if (broker == 0) {
            if (freopen("/dev/null", "w", stdout) != nullptr) {
                execvp("broker", const_cast<char**>(arguments.data()));
            }
            _exit(127);
        }
        int status = 0;
        waitpid(broker, &status, 0);
        times.push_back(microseconds_since(begin));
    }
    return quantile(times, 0.5);
}

using Measured = std::map<std::string, Series>; // by the kind of command

Measured measure(int commands)
{
    const Plugin plugin("");
    const std::string hash = plugin.hash_pair("secret");
    SeenDaemon daemon(PATHS.socket, PATHS.transcript());
    Measured measured;
    constexpr int A_ROUND = std::size(KINDS);
    for (int number = -A_ROUND; number < commands; ++number) { // one round to get warm
        const int round = (number + A_ROUND) / A_ROUND;
        const std::string kind = KINDS[(number + A_ROUND) % A_ROUND].name;
        takeCallTimes();
        const auto begin = Clock::now();
        const bool done = carry_out(plugin, kind, round, hash);
        const double whole = microseconds_since(begin);
        const CallTimes calls = takeCallTimes();
        const Spent spent = daemon.spent();
        if (!done) {
            throw std::runtime_error(kind + " of round " + std::to_string(round) + " failed");
        }
        if (number >= 0) {
            note(measured[kind], whole, calls, spent);
        }
    }
    return measured;
}

void print_table(Measured& measured)
{
    const double start = broker_takes({"broker", "--help"});
    const double load = broker_takes({"broker", "run", "frobnicate"}) - start;
    std::printf(
        "start of a broker %.0f us; load of the plug-in, with a command that is unknown %.0f us\n\n"
        "%-24s",
        start, load, "median, us"
    );
    for (const Kind& kind : KINDS) {
        std::printf(" %16s", kind.name);
    }
    for (const char* row : ROWS) {
        std::printf("\n%-24s", row);
        for (const Kind& kind : KINDS) {
            std::printf(" %16.0f", quantile(measured[kind.name].rows[row], 0.5));
        }
    }
}

void print_percentiles(Measured& measured)
{
    std::vector<double> all;
    std::vector<double> bytes;
    for (const Kind& kind : KINDS) {
        const Series& series = measured[kind.name];
        if (kind.daemon_goal) {
            all.insert(all.end(), series.daemon.begin(), series.daemon.end());
            bytes.insert(bytes.end(), series.bytes.begin(), series.bytes.end());
        }
    }
    std::printf(
        "\n\nthe daemon, of adduser, query, updateuser, deleteuser: median %.0f us, 99th percentile"
        " %.0f us, %.2f times the median (3 wanted), longest %.0f us\n"
        "it writes a command: median %.0f bytes, 99th percentile %.0f\n",
        quantile(all, 0.5), quantile(all, 0.99), quantile(all, 0.99) / quantile(all, 0.5),
        quantile(all, 1), quantile(bytes, 0.5), quantile(bytes, 0.99)
    );
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Measures where the time of a command on the desk goes.");
    int accounts = 4;
    int commands = 600;
    app.add_option("--accounts", accounts, "that the daemon keeps")->check(CLI::PositiveNumber);
    app.add_option("--commands", commands, "to carry out")->check(CLI::PositiveNumber);
    CLI11_PARSE(app, argc, argv);
    try {
        seed(accounts);
        Measured measured = measure(commands);
        std::printf("%d accounts, %d commands; ", accounts, commands);
        print_table(measured);
        print_percentiles(measured);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_desk: %s\n", error.what());
        return 1;
    }
    return 0;
}
