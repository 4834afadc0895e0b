#include "bench/desk_daemon.h"

#include "devkit/boxwelld/files.h"
#include "devkit/bwdclient/frame.h"

#include <sys/socket.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace {

pid_t listener_on(const std::string& path)
{
    const Fd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address;
    ucred peer{};
    socklen_t size = sizeof peer;
    if (frame_address(path.c_str(), &address) != 0 ||
        connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        throw_errno(path);
    }
    return peer.pid;
}

} // namespace

SeenDaemon::SeenDaemon(const std::string& socket, const std::string& transcript)
    : process_(listener_on(socket)), transcript_(transcript)
{
    if (clock_getcpuclockid(process_, &clock_) != 0) {
        throw std::runtime_error("the daemon's clock cannot be read");
    }
    transcript_.seekg(0, std::ios::end);
    spent();
}

double SeenDaemon::processor() const
{
    timespec time{};
    clock_gettime(clock_, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

double SeenDaemon::written() const
{
    std::ifstream counts("/proc/" + std::to_string(process_) + "/io");
    for (std::string name; counts >> name;) {
        double count = 0;
        counts >> count;
        if (name == "wchar:") {
            return count;
        }
    }
    return 0; // of another user's daemon nothing is told
}

Spent SeenDaemon::spent()
{
    Spent spent;
    const double processor_now = processor();
    spent.microseconds = processor_now - std::exchange(processor_before_, processor_now);
    const double written_now = written();
    spent.bytes = written_now - std::exchange(written_before_, written_now);
    transcript_.clear(); // of its end
    for (std::string line; std::getline(transcript_, line);) {
        const auto stages = nlohmann::json::parse(line).value("stages", nlohmann::json::object());
        for (std::size_t at = 0; at < std::size(STAGES); ++at) {
            spent.stages[at] += stages.value(STAGES[at], 0.0) * 1000;
        }
    }
    return spent;
}
