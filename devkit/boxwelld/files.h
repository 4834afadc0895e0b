/** The daemon's files and what it does with whole files. Failures are thrown: std::system_error. */
#pragma once

#include <string>
#include <string_view>
#include <utility>

/** Where the daemon's files are; the command line and the environment decide. */
struct Paths {
    std::string state = "/var/lib/boxwelld";
    std::string socket;
    std::string passwd = "/etc/passwd";
    std::string group = "/etc/group";

    std::string database() const { return state + "/state.db"; }
    /** The text of passwd or group (`name`) while it is written whole. */
    std::string unfinished(const std::string& name) const { return state + '/' + name + ".whole"; }
    std::string transcript() const { return state + "/transcript.jsonl"; }
};

/** Owns a descriptor. */
class Fd {
  public:
    explicit Fd(int fd) : fd_(fd) {}
    Fd(Fd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Fd& operator=(Fd&& other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Fd();
    int get() const { return fd_; }

  private:
    int fd_;
};

/** Throws the error in errno, "<what>: <its text>". */
[[noreturn]] void throw_errno(const std::string& what);

/** Opens `path`; a file made by it has mode 0644. */
Fd open_file(const std::string& path, int flags);

std::string read_all(const Fd& file, const std::string& path);

/** The whole of a file, or of standard input for "-". */
std::string read_text(const std::string& path);

/** Writes `text` into the open file, `at` bytes behind its begin. */
void write_at(const Fd& file, const std::string& path, std::string_view text, std::size_t at);

/**
 * Gives the open file the content `text` in place, as a bind-mounted file needs it: written in one
 * go, and only then cut to its new length.
 */
void overwrite(const Fd& file, const std::string& path, std::string_view text);

/** Blanks instead of line ends and other control characters: `text` as one line. */
std::string one_line(std::string text);
