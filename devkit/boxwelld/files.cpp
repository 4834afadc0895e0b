#include "devkit/boxwelld/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

Fd::~Fd()
{
    if (fd_ >= 0) {
        close(fd_);
    }
}

void throw_errno(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

Fd open_file(const std::string& path, int flags)
{
    Fd file(open(path.c_str(), flags | O_CLOEXEC, 0644));
    if (file.get() < 0) {
        throw_errno(path);
    }
    return file;
}

std::string read_all(const Fd& file, const std::string& path)
{
    std::string text;
    std::array<char, 65536> chunk{};
    for (;;) {
        const ssize_t got = read(file.get(), chunk.data(), chunk.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw_errno(path);
        }
        if (got == 0) {
            return text;
        }
        text.append(chunk.data(), static_cast<std::size_t>(got));
    }
}

std::string read_text(const std::string& path)
{
    if (path == "-") {
        return read_all(Fd(dup(STDIN_FILENO)), "standard input");
    }
    return read_all(open_file(path, O_RDONLY), path);
}

void write_at(const Fd& file, const std::string& path, std::string_view text, std::size_t at)
{
    while (!text.empty()) {
        const ssize_t written =
            pwrite(file.get(), text.data(), text.size(), static_cast<off_t>(at));
        if (written < 0 && errno != EINTR) {
            throw_errno(path);
        }
        const std::size_t done = written < 0 ? 0 : static_cast<std::size_t>(written);
        text.remove_prefix(done);
        at += done;
    }
}

void overwrite(const Fd& file, const std::string& path, std::string_view text)
{
    write_at(file, path, text, 0);
    if (ftruncate(file.get(), static_cast<off_t>(text.size())) != 0) {
        throw_errno(path);
    }
}

std::string one_line(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, ' '
    );
    while (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
    return text;
}
