/** A real daemon in a folder of its own, and the client library's call to it. */
#pragma once

#include <sys/types.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>

using Json = nlohmann::json;

struct Outcome {
    int status;
    std::string output; // standard error included
};

struct Answer {
    int result;
    bool null;
    std::string reply;
};

/** One exchange through libbwdclient. */
Answer call(std::string request);

class Daemon {
  public:
    /** Seeded and started; it leaves a client that neither sends nor reads after so many milliseconds. */
    explicit Daemon(int client_timeout_ms = 300);
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    /** The state with alice (admin, 1001), bob (sky-hold, 1002), dave (share, also sky-hold). */
    void seed() const;
    void start();
    /** Waits until the process has ended, after `signal` unless that is 0; the wait status. */
    int stop(int signal);

    /** Runs the daemon's program; `arguments` are a shell's. */
    static Outcome run(const std::string& arguments);
    static Json state() { return Json::parse(run("show --json").output); }

    /** What the process has read and written, by the names in /proc/PID/io. */
    std::map<std::string, long> input_and_output() const;

    std::string path(const std::string& name) const { return folder_ + '/' + name; }
    std::string read(const std::string& name) const;
    void write(const std::string& name, const std::string& text) const;

  private:
    std::string folder_;
    std::string client_timeout_ms_;
    pid_t process_ = -1;
};

/** Requests as the plug-in's templates lay them out, shortened. */
std::string mxl(const std::string& operation);
std::string add_user(const std::string& name, const std::string& group = "sky-hold");
std::string set_user(int id, const std::string& elements);
std::string delete_user(const std::string& id);
std::string find_user(const std::string& name);
std::string add_remote(const std::string& attributes);
