// What recording costs: the same transactions with the daemon, recorded by the library and not, in
// turn. A program of its own, by hand: ./dev bench --recording
#include "bench/transaction.h"
#include "common/mxl/bwdclient.h"
#include "common/mxl_templates.h"
#include "devkit/on_device.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "syscmd/handler.h"

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>

namespace {

/** In memory on a private device. */
constexpr char RECORDING[] = "/var/log/bench-recording.jsonl";
/** Base64 of zoe's hashes. */
constexpr char PAIR[] = "N0M0MUQwOUE6JDEkUWE3TG0yWHAkWnI0LmhUOXdZYzFLYk4zc1ZlOEZvMA==";

using Process = decltype(process_request_bwdclient);

Process* bare = nullptr;
Process* recorded = nullptr;
Process* chosen = nullptr;
std::size_t transactions = 0; // made so far
std::ptrdiff_t lines = 1;     // that they must have left, the header among them

[[noreturn]] void die(const std::string& why)
{
    std::fprintf(stderr, "bench_recording: %s\n", why.c_str());
    std::exit(1);
}

Process* call_of(const char* library)
{
    void* const loaded = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    void* const call = loaded == nullptr ? nullptr : dlsym(loaded, "process_request_bwdclient");
    if (call == nullptr) {
        die(dlerror());
    }
    return reinterpret_cast<Process*>(call);
}

// ---- the work -----------------------------------------------------------------------------------

/** Sends a request, which it releases and the daemon grants; the reply. */
std::string granted(char* text)
{
    AUTO_FREE char* request = text;
    AUTO_FREE char* reply = nullptr;
    int length = 0;
    const int size = static_cast<int>(std::strlen(request));
    if (process_request_bwdclient(request, size, &reply, &length) != 0 || reply == nullptr ||
        std::strstr(reply, "\"success\"") == nullptr) {
        die("not granted");
    }
    return reply;
}

void query()
{
    granted(String(GET_USER_DATA_MXL_TEXT, "", "zoe", ""));
}

void cycle()
{
    constexpr char ID[] = "<User id=\"";
    query();
    granted(String(
        ADD_USER_MXL_TEXT, "User", "zoe", "4E3AB12CD34EF56A", "$1$Qa7Lm2Xp$Zr4.hT9wYc1KbN3sVe8Fo0",
        "sky-hold", "zoe@example.com"
    ));
    const std::string found = granted(String(GET_USER_DATA_MXL_TEXT, "", "zoe", ""));
    const std::size_t at = found.find(ID) + sizeof ID - 1;
    granted(String(DELETE_USER_MXL_TEXT, found.substr(at, found.find('"', at) - at).c_str()));
}

void command(const std::vector<std::string>& params)
{
    PlainTransaction transaction;
    transaction.params = params;
    transaction.credentials = "YWxpY2U6c2VjcmV0"; // alice:secret
    transaction.keeping = true;
    execute(&transaction);
    if (transaction.effects.find("response success") == std::string::npos) {
        die(params[0] + ": " + transaction.effects);
    }
}

void commands()
{
    command({"adduser", "zoe", PAIR, "zoe@example.com"});
    command({"deleteuser", "zoe", "zoe@example.com"});
}

const struct {
    const char* name;
    void (*work)();
    std::size_t rounds;
} CASES[] = {
    {"query of nobody", query, 3000},
    {"query, add, query, delete", cycle, 750},
    {"commands adduser, deleteuser", commands, 750},
};

// ---- the measure --------------------------------------------------------------------------------

/** What a piece of work took: microseconds by the clock, and of this thread's processor time. */
struct Took {
    double wall;
    double cpu;
};

double now(clockid_t clock)
{
    timespec time = {};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) * 1e-3;
}

Took took(void (*work)(), Process* call)
{
    chosen = call;
    const Took start = {now(CLOCK_MONOTONIC), now(CLOCK_THREAD_CPUTIME_ID)};
    work();
    const double cpu = now(CLOCK_THREAD_CPUTIME_ID);
    return {now(CLOCK_MONOTONIC) - start.wall, cpu - start.cpu};
}

/** Prints median and quartiles. */
void print(std::vector<double> samples)
{
    std::sort(samples.begin(), samples.end());
    const auto at = [&](std::size_t quarter) {
        return samples[samples.size() * quarter / 4];
    };
    std::printf(" | %6.2f (%.2f to %.2f)", at(2), at(1), at(3));
}

void measure(const char* names)
{
    for (const auto& row : CASES) {
        std::vector<double> alone;
        std::vector<double> percent;
        std::vector<double> cpu;
        took(row.work, recorded);
        const std::size_t before = transactions;
        took(row.work, bare);
        const auto each = static_cast<double>(transactions - before);
        for (std::size_t round = 0; round < row.rounds; ++round) {
            const bool bare_first = round % 2 == 0; // a drift meets both
            const Took first = took(row.work, bare_first ? bare : recorded);
            const Took second = took(row.work, bare_first ? recorded : bare);
            const Took& without = bare_first ? first : second;
            const Took& with = bare_first ? second : first;
            alone.push_back(without.wall / each);
            percent.push_back((with.wall / without.wall - 1) * 100);
            cpu.push_back((with.cpu - without.cpu) / each);
        }
        std::printf("| %s | %s", row.name, names);
        print(alone);
        print(percent);
        print(cpu);
        std::printf(" |\n");
    }
}

/** In a process of its own, since the library takes its environment when it is loaded. */
int measured(const char* key)
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        unlink(RECORDING);
        setenv("BWDRECORD_FILE", RECORDING, 1);
        setenv("BWDRECORD_KEY", key, 1);
        bare = call_of(CLIENT_PATH);
        recorded = call_of(RECORD_PATH);
        measure(*key == '\0' ? "plain" : "by a key");
        std::ifstream file(RECORDING);
        const std::istreambuf_iterator<char> text(file);
        if (std::count(text, {}, '\n') != lines) {
            die("lines are missing");
        }
        std::exit(0);
    }
    int status = 1;
    waitpid(child, &status, 0);
    return status;
}

} // namespace

extern "C" int process_request_bwdclient(char* request, int length, char** reply, int* reply_length)
{
    ++transactions;
    lines += chosen == recorded ? 1 : 0;
    return chosen(request, length, reply, reply_length);
}

int main()
{
    if (!on_device()) {
        die("this is no device: ./dev bench --recording starts one");
    }
    std::puts(
        "| work | names | us each, not recorded | % longer, recorded | us of processor time more |"
    );
    return measured("") == 0 && measured("a key") == 0 ? 0 : 1;
}
