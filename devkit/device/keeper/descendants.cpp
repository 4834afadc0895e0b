#include "devkit/device/keeper/descendants.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

using Children = std::multimap<pid_t, pid_t>;

/** The parent in /proc/PID/stat, "PID (NAME) STATE PARENT ..."; NAME may hold anything; 0: gone. */
pid_t parent_of(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text, '\0');
    const auto name_end = text.rfind(") ");
    if (name_end == std::string::npos || name_end + 4 >= text.size()) {
        return 0;
    }
    pid_t parent = 0;
    std::from_chars(text.data() + name_end + 4, text.data() + text.size(), parent);
    return parent;
}

Children read_children()
{
    Children children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        pid_t process = 0;
        std::from_chars(name.data(), name.data() + name.size(), process);
        if (process > 0) {
            children.emplace(parent_of(process), process);
        }
    }
    return children;
}

/** The descendants of `root`, each before its own descendants. */
std::vector<pid_t> descendants_of(pid_t root)
{
    const Children children = read_children();
    std::vector<pid_t> found{root};
    for (std::size_t i = 0; i < found.size(); ++i) {
        const auto [first, last] = children.equal_range(found[i]);
        for (auto child = first; child != last; ++child) {
            found.push_back(child->second);
        }
    }
    found.erase(found.begin());
    return found;
}

bool reap()
{
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    return waitpid(-1, nullptr, WNOHANG) == 0; // 0: children, but none of them ended
}

} // namespace

void end_descendants()
{
    while (reap()) {
        const auto processes = descendants_of(getpid());
        for (auto process = processes.rbegin(); process != processes.rend(); ++process) {
            kill(*process, SIGKILL);
        }
        usleep(2000);
    }
}
