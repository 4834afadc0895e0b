#include "tests/faults/world.h"

#include "common/device/owner_file.h"
#include "common/device/upgrade_flag.h"
#include "common/mxl/bwdclient.h"
#include "devkit/boxwelld/seed.h"
#include "devkit/boxwelld/transactions.h"
#include "syscmd/sessions/inode_flags.h"
#include "syscmd/sessions/record.h"
#include "tools/failing_calls/faults.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <regex>

namespace fs = std::filesystem;

namespace {

/** Another account's record, which comes first in some replies. */
constexpr const char* FIRST = "<User id=\"1004\"><User_Id>1004</User_Id><User_Name><![CDATA[dave]]></User_Name>"
                              "<Group_Name><![CDATA[share]]></Group_Name></User>";
constexpr const char* REGISTRATION =
    "<registration><owner>alice</owner><serial>former</serial><p2powner>alice-p2p</p2powner></registration>";
const struct {
    const char* name;
    const char* user;
    time_t age;
    std::uint32_t flags;
} RECORDS[] = {{"day", "bob", 0, 0}, {"kept", "bob", 0, FS_IMMUTABLE_FL}, {"old", "dave", 100000, 0},
    {"pinned", "bob", 100000, FS_IMMUTABLE_FL}};
constexpr const char* SESSIONS = LOCAL_SESSION_DIRECTORY;
constexpr const char* LOG_FILE = "/var/log/shbroker.log";

std::string contentOf(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}
void setContent(const std::string& path, const std::string& content)
{
    std::ofstream(path) << content;
}

// ---- the daemon --------------------------------------------------------------------------------

constexpr char END = '\1'; // of a request in a history

struct Answer {
    std::string reply;
    std::string fact;
};

/** A request in few words: what it does, and every value in it. */
std::string inBrief(const std::string& request, bool changed)
{
    static const std::regex value(
        "<xs:(query|add|delete|set) |User:(Remote):|resource-id=\"([0-9]+)\"|UserName=\"([^\"]*)\"|"
        "<!\\[CDATA\\[([^\\]]+)|<User_Name>([^<]+)|(IsLocked>[01])|Authorization: (.+)\r");
    std::string text = changed ? "did" : "asked";
    for (std::sregex_iterator at(request.begin(), request.end(), value), end; at != end; ++at) {
        for (std::size_t group = 1; group < at->size(); ++group) {
            text += (*at)[group].matched ? ' ' + at->str(group) : "";
        }
    }
    return text;
}

/** The real daemon's work, each request in each state carried out once and then remembered. */
struct Daemon {
    Paths paths{.state = "/var/lib/faults", .socket = "", .passwd = "/etc/passwd", .group = "/etc/group"};
    Store store{paths};
    std::string store_is_at = "nowhere"; // the requests that led there
    std::string history;                 // those of the present trial
    std::string files_are_at = "nowhere";
    std::map<std::string, std::pair<std::string, std::string>> files; // passwd and group
    std::map<std::pair<std::string, std::string>, Answer> answers;
    Facts facts;
    std::string refused;

    void moveStore(const std::string& to)
    {
        if (store_is_at == to) {
            return;
        }
        seed(store, contentOf(TABLES "seed.json"));
        for (std::size_t at = 0; at < to.size();) {
            const std::size_t end = to.find(END, at);
            carry_out(store, to.substr(at, end - at));
            at = end + 1;
        }
        store_is_at = files_are_at = to;
    }
    void moveFiles(const std::string& to)
    {
        if (files.count(to) == 0) {
            moveStore(to);
            files[to] = {contentOf(paths.passwd), contentOf(paths.group)};
        }
        if (std::exchange(files_are_at, to) != to) {
            setContent(paths.passwd, files[to].first);
            setContent(paths.group, files[to].second);
        }
    }
    const Answer& ask(const std::string& request)
    {
        if (!refused.empty() && request.find(refused) != request.npos) {
            static Answer refusal;
            refusal = {refuse(request, "busy"), inBrief(request, false)};
            facts.push_back(refusal.fact);
            return refusal;
        }
        const auto key = std::pair(history, request);
        if (answers.count(key) == 0) {
            moveStore(history);
            Answer answer = {carry_out(store, request), ""};
            static const std::regex followed("\\[(second|stranger|dave)\\]");
            if (std::regex_search(request, followed)) {
                answer.reply.insert(answer.reply.find("\">", answer.reply.find("status=")) + 2, FIRST);
            }
            const bool changed = request.find("<xs:query") == request.npos &&
                                 answer.reply.find("status=\"success\"") != answer.reply.npos;
            answer.fact = inBrief(request, changed);
            store_is_at += changed ? request + END : "";
            files_are_at = store_is_at;
            answers.emplace(key, answer);
        }
        const Answer& answer = answers[key];
        history += answer.fact.starts_with("did") ? request + END : "";
        moveFiles(history);
        facts.push_back(answer.fact);
        return answer;
    }
};

Daemon& daemon()
{
    static Daemon the_daemon;
    return the_daemon;
}

} // namespace

int process_request_bwdclient(char* request, int request_length, char** reply, int* reply_length)
{
    const int error = strike("client");
    if (request_length != static_cast<int>(strlen(request)) || *reply != nullptr || *reply_length != 0) {
        abort();
    }
    *reply = reinterpret_cast<char*>(1); // undefined after a failure
    if (error == UNSENT) {
        return -1;
    }
    {
        const Aside aside;
        const std::string& text = daemon().ask({request, static_cast<std::size_t>(request_length)}).reply;
        if (error == LOST) {
            return 2;
        }
        const std::size_t length = error == CUT ? cutLength(text.size()) : text.size();
        *reply_length = static_cast<int>(length);
        *reply = error == NO_REPLY ? nullptr : strndup(text.c_str(), length);
    }
    if (*reply != nullptr) {
        countBlock();
    }
    return 0;
}

// ---- the files ---------------------------------------------------------------------------------

static std::uint32_t flagsOf(const fs::path& path, std::optional<std::uint32_t> wanted = {})
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::uint32_t flags = 0;
    getInodeFlags(fd, &flags);
    if (wanted) {
        setInodeFlags(fd, *wanted);
    }
    close(fd);
    return flags;
}

Facts fileFacts()
{
    Facts facts;
    const std::string owner = contentOf(OWNER_FILE);
    static const std::regex element("<([a-z0-9_]+)>([^<]*)</");
    std::string values = !fs::exists(OWNER_FILE)               ? "no owner file"
                         : owner.empty()                       ? "empty owner file"
                         : !owner.ends_with("</registration>") ? "cut owner file"
                                                               : "owner file";
    for (std::sregex_iterator at(owner.begin(), owner.end(), element), end; at != end; ++at) {
        values += ", " + at->str(1) + ' ' + at->str(2);
    }
    facts.push_back(values);
    if (fs::exists(SSO_UPGRADE_FLAG)) {
        facts.push_back("upgrade flag");
    }
    struct stat status = {};
    if (stat(SESSIONS, &status) == 0) {
        facts.push_back("sessions");
        for (const auto& entry : fs::directory_iterator(SESSIONS)) {
            stat(entry.path().c_str(), &status);
            facts.push_back("session " + entry.path().filename().string() + ' ' + contentOf(entry.path()) +
                            ((status.st_mode & 0777) == 0004 ? "" : " writable") +
                            (time(nullptr) - status.st_mtime > 86400 ? " old" : "") +
                            ((flagsOf(entry.path()) & FS_IMMUTABLE_FL) != 0 ? " pinned" : ""));
        }
    }
    for (const auto& entry : fs::directory_iterator("/dev/shm")) {
        facts.push_back("shared memory " + entry.path().filename().string());
    }
    std::sort(facts.begin(), facts.end());
    return facts;
}

const Facts& requestFacts()
{
    return daemon().facts;
}

std::string logFile()
{
    return contentOf(LOG_FILE);
}

void prepareDevice(const Prepared& state)
{
    daemon().refused = state.refused;
    daemon().history.clear();
    daemon().facts.clear();
    daemon().moveFiles("");
    on_command = [](const char* command) {
        static const std::regex names(R"(.*<args user=\\"(.*)\\" newuser=\\"(.*)\\" clouduser=\\"(.*)\\"/>.*)");
        daemon().facts.push_back("did event " + std::regex_replace(command, names, "$1 $2 $3"));
    };
    truncate(LOG_FILE, 0);

    static Facts prepared;
    if (!prepared.empty() && fileFacts() == prepared) {
        return;
    }
    if (fs::exists(SESSIONS)) {
        for (const auto& entry : fs::directory_iterator(SESSIONS)) {
            flagsOf(entry.path(), 0);
        }
        fs::remove_all(SESSIONS);
    }
    fs::remove(SSO_UPGRADE_FLAG);
    setContent(OWNER_FILE, state.ownerless ? "<registration></registration>" : REGISTRATION);
    for (const auto& [name, user, age, flags] : RECORDS) {
        if (!state.records) {
            break;
        }
        const std::string path = std::string(SESSIONS) + '/' + name;
        fs::create_directory(SESSIONS);
        setContent(path, user);
        setContent(std::string("/dev/shm/") + name, "");
        const timespec times[] = {{time(nullptr) - age, 0}, {time(nullptr) - age, 0}};
        utimensat(AT_FDCWD, path.c_str(), times, 0);
        chmod(path.c_str(), 0004);
        flagsOf(path, flags);
    }
    prepared = fileFacts();
}
