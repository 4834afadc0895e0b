#include "tools/fuzz/device.h"

#include "common/device/owner_file.h"
#include "common/device/upgrade_flag.h"
#include "common/mxl/bwdclient.h"
#include "syscmd/sessions/inode_flags.h"
#include "syscmd/sessions/record.h"
#include "tools/fuzz/targets.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

Outcome device;

namespace {

constexpr long NOW = 1772600767; // as failing_calls has it
const std::string SESSIONS = LOCAL_SESSION_DIRECTORY;
const std::string OBJECTS = "/dev/shm/";
const Case* laid_out = nullptr;
std::size_t tools_run = 0;
std::size_t requests = 0;

std::optional<std::string> contentOf(const std::string& path)
{
    std::ifstream file(path);
    return file ? std::optional(std::string(std::istreambuf_iterator<char>(file), {}))
                : std::nullopt;
}

bool isName(const std::string& name)
{
    return !name.empty() && name.size() < 255 && name != "." && name != ".." &&
           name.find_first_of(std::string("/\0", 2)) == name.npos;
}

/** Sets the flags of a file; whether that can be done. */
bool pin(const std::string& path, bool pinned)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool done = setInodeFlags(fd, pinned ? FS_IMMUTABLE_FL : 0) == 0;
    close(fd);
    return done;
}
bool isPinned(const std::string& path)
{
    std::uint32_t flags = 0;
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    getInodeFlags(fd, &flags);
    close(fd);
    return (flags & FS_IMMUTABLE_FL) != 0;
}

void layRecords(const Files& files)
{
    if (fs::exists(SESSIONS)) {
        for (const auto& entry : fs::directory_iterator(SESSIONS)) {
            pin(entry.path(), false);
            fs::remove(OBJECTS + entry.path().filename().string());
        }
        fs::remove_all(SESSIONS);
    }
    for (const auto& [name, record] : files.records) {
        const std::string path = SESSIONS + '/' + name;
        fs::create_directory(SESSIONS);
        std::ofstream(OBJECTS + name).flush();
        std::ofstream(path) << record.content;
        const timespec times[] = {{NOW - record.age, 0}, {NOW - record.age, 0}};
        utimensat(AT_FDCWD, path.c_str(), times, 0);
        chmod(path.c_str(), record.mode);
        pin(path, record.pinned);
    }
}

} // namespace

Case::Case(const std::string& input)
{
    files.owner = "<registration><owner>alice</owner><p2powner>alice-p2p</p2powner></registration>";
    std::size_t end = 0;
    for (std::size_t at = 0; at < input.size(); at = end + 2) {
        end = std::min(input.find("\n\n", at), input.size());
        const std::string field = input.substr(at, end - at);
        const char kind = field[0];
        const std::string text = field.size() > 2 ? field.substr(2) : "";
        std::istringstream parts(text);
        if (kind == 'w') {
            words.push_back(text);
        } else if (kind == 'a') {
            credentials = text;
        } else if (kind == 'o') {
            files.owner = text;
        } else if (kind == 'r') {
            replies.push_back({false, read(text)});
        } else if (kind == 'n' || kind == 'e') {
            replies.push_back({kind == 'n', {}});
        } else if (kind == 'd') {
            prints.push_back(text);
        } else if (kind == 's' || kind == 'p') {
            std::string name;
            Record record{.content = "", .pinned = kind == 'p' && canPin()};
            parts >> record.age >> name;
            std::getline(parts.ignore(1), record.content, '\0');
            if (isName(name) && record.age >= 0 && record.age < NOW) {
                files.records[name] = record;
            }
        } else if (kind == 'f') {
            std::string name;
            std::size_t error = 0;
            parts >> name >> error >> fault.nth;
            for (const Kind& one : KINDS) {
                if (one.name == name && name != "client") {
                    fault.kind = one.name;
                    fault.error = one.errors[error % one.errors.size()];
                    fault.onward = name == "allocation" && fault.nth < 0;
                    fault.nth = std::abs(fault.nth % 1000);
                }
            }
        }
    }
    for (const std::string& word : words) {
        is_contained =
            is_contained && (words[0] != "initlocalsession" || word.find('/') == word.npos);
    }
    for (const auto& [name, record] : files.records) {
        files.objects.insert(name);
    }
}

Reply Case::reply(std::size_t index, const std::string& request) const
{
    if (index < replies.size()) {
        return replies[index];
    }
    const std::string name = between(request, "<xs:value><![CDATA[", "]]></xs:value>");
    return {
        false,
        "<xs:response status=\"success\"><User id=\"7\"><User_Id>7</User_Id><User_Name><![CDATA[" +
            name +
            "]]></User_Name><Group_Name><![CDATA[sky-hold]]></Group_Name></User></xs:response>"};
}

std::string Files::told() const
{
    std::string text =
        "owner file " + owner.value_or("(none)") + (upgraded ? "\nupgraded\n" : "\n");
    for (const auto& [name, record] : records) {
        text += "session " + name + " of " + record.content + ", " + std::to_string(record.age) +
                " s, mode " + std::to_string(record.mode) + (record.pinned ? " pinned\n" : "\n");
    }
    for (const std::string& name : objects) {
        text += "shared memory " + name + '\n';
    }
    return text;
}

std::string Outcome::told() const
{
    return joined(asked) + refusal + "\ncode " + std::to_string(code) + '\n' + joined(responses) +
           files.told();
}

Files filesNow()
{
    Files files = {contentOf(OWNER_FILE), fs::exists(SSO_UPGRADE_FLAG), {}, {}};
    if (fs::exists(SESSIONS)) {
        for (const auto& entry : fs::directory_iterator(SESSIONS)) {
            struct stat status = {};
            stat(entry.path().c_str(), &status);
            files.records[entry.path().filename()] = {
                contentOf(entry.path()).value_or("(unreadable)"),
                std::max(NOW - static_cast<long>(status.st_mtime), 0L), isPinned(entry.path()),
                status.st_mode & 0777U};
        }
    }
    files.objects = laid_out->files.objects;
    std::erase_if(files.objects, [](const std::string& name) {
        return !fs::exists(OBJECTS + name);
    });
    return files;
}

bool canPin()
{
    static const bool can = [] {
        const std::string path = SESSIONS + "-probe";
        std::ofstream(path).flush();
        const bool done = pin(path, true);
        pin(path, false);
        fs::remove(path);
        return done;
    }();
    return can;
}

void prepare(const Case& test)
{
    laid_out = &test;
    tools_run = requests = 0;
    device = {};
    shell_is_replayed = true;
    on_command = [](const char* command) {
        device.asked.emplace_back(command);
    };
    on_print = [](const char* command) {
        device.asked.emplace_back(command);
        return laid_out->printed(tools_run++);
    };
    umask(022);
    fs::remove(SSO_UPGRADE_FLAG);
    if (test.files.owner) {
        std::ofstream(OWNER_FILE) << *test.files.owner;
    } else {
        fs::remove(OWNER_FILE);
    }
    layRecords(test.files);
    truncate("/var/log/shbroker.log", 0);
}

int process_request_bwdclient(char* request, int request_length, char** reply, int* reply_length)
{
    if (request_length != static_cast<int>(strlen(request)) || *reply != nullptr ||
        *reply_length != 0) {
        abort();
    }
    *reply = reinterpret_cast<char*>(1); // undefined after a failure
    {
        const Aside aside;
        device.asked.emplace_back(request);
        const Reply brought = laid_out->reply(requests++, request);
        if (brought.fails) {
            return 2;
        }
        *reply = brought.text ? strdup(brought.text->c_str()) : nullptr;
    }
    if (*reply != nullptr) {
        countBlock();
    }
    return 0;
}
