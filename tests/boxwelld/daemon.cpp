#include "tests/boxwelld/daemon.h"

#include "common/mxl/bwdclient.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

constexpr char SEED[] = R"({"groups": [{"name": "admin"}, {"name": "sky-hold"}, {"name": "share"}],
"accounts": [{"name": "alice", "group": "admin", "email": "Alice@example.com"},
             {"name": "bob", "group": "sky-hold", "email": "bob@example.com", "sys_hash": "$1$b"},
             {"name": "dave", "group": "share", "locked": true, "member_of": ["sky-hold"]}],
"remote_users": [{"name": "bob"}], "cloud_owner": "alice"})";

} // namespace

Answer call(std::string request)
{
    char* reply = nullptr;
    int length = -1;
    const int result = process_request_bwdclient(request.data(), static_cast<int>(request.size()), &reply, &length);
    if (result != 0 || reply == nullptr)
        return {result, true, ""};
    Answer answer{result, false, std::string(reply)};
    EXPECT_EQ(answer.reply.size(), static_cast<std::size_t>(length));
    free(reply);
    return answer;
}

Daemon::Daemon(int client_timeout_ms) : client_timeout_ms_(std::to_string(client_timeout_ms))
{
    char name[] = "/tmp/boxwelld_test.XXXXXX";
    folder_ = mkdtemp(name);
    write("passwd", "root:x:0:0::/root:/bin/sh\nnobody:x:65534:65534::/:/bin/false");
    write("group", "root:x:0:\n");
    setenv("BOXWELLD_STATE", path("state").c_str(), 1);
    setenv("BOXWELLD_SOCKET", path("socket").c_str(), 1);
    setenv("BOXWELLD_PASSWD", path("passwd").c_str(), 1);
    setenv("BOXWELLD_GROUP", path("group").c_str(), 1);
    seed();
    start();
}

void Daemon::seed() const
{
    write("seed", SEED);
    EXPECT_EQ(run("seed " + path("seed")).status, 0);
}

Daemon::~Daemon()
{
    if (process_ > 0) {
        EXPECT_EQ(stop(SIGTERM), 0) << "the daemon did not end cleanly\n" << read("log");
        EXPECT_FALSE(std::filesystem::exists(path("socket")));
    }
    std::filesystem::remove_all(folder_);
}

void Daemon::start()
{
    std::filesystem::remove(path("socket"));
    process_ = fork();
    if (process_ == 0) {
        if (freopen(path("log").c_str(), "a", stderr) != nullptr)
            execl(BOXWELLD, BOXWELLD, "serve", "--client-timeout", client_timeout_ms_.c_str(), nullptr);
        _exit(127);
    }
    for (int tries = 0; tries < 3000 && access(path("socket").c_str(), F_OK) != 0; ++tries)
        usleep(10000);
}

int Daemon::stop(int signal)
{
    int status = -1;
    if (signal != 0)
        kill(process_, signal);
    EXPECT_EQ(waitpid(process_, &status, 0), process_);
    std::istringstream lines(read("log"));
    for (std::string line; std::getline(lines, line);)
        EXPECT_EQ(line.substr(0, 10), "boxwelld: ") << "somebody else's words: " << line;
    process_ = -1;
    return status;
}

Outcome Daemon::run(const std::string& arguments)
{
    std::string output;
    FILE* pipe = popen((std::string(BOXWELLD) + ' ' + arguments + " 2>&1").c_str(), "re");
    for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe))
        output += static_cast<char>(c);
    return {WEXITSTATUS(pclose(pipe)), output};
}

std::map<std::string, long> Daemon::input_and_output() const
{
    std::map<std::string, long> counts;
    std::ifstream file("/proc/" + std::to_string(process_) + "/io");
    for (std::string name; file >> name;)
        file >> counts[name];
    return counts;
}

std::string Daemon::read(const std::string& name) const
{
    std::ifstream file(path(name));
    return {std::istreambuf_iterator<char>(file), {}};
}

void Daemon::write(const std::string& name, const std::string& text) const
{
    std::ofstream(path(name)) << text;
}

std::string mxl(const std::string& operation)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?> <xs:mxl)"
           R"( xmlns:xs="http://nas.example.com/protocol/transaction/MXLSchema-0.9")"
           R"( xmlns="urn:varden:nas:boxwelld" src="dpv_1" dst="nas"><xs:transaction id="trid">)" +
           operation + "</xs:transaction></xs:mxl>";
}

std::string add_user(const std::string& name, const std::string& group)
{
    return mxl(R"(<xs:add id="opid" resource-type="User" c-resource-id="Users")"
               R"( c-resource-type="User_Collection"> <User_Collection><User id="0" resource-type="User">)"
               R"(<User_Id><![CDATA[]]></User_Id> <User_Name><![CDATA[)" +
               name + "]]></User_Name><SmbHash>S</SmbHash><SysHash>$1$h</SysHash><Group_Name><![CDATA[" + group +
               "]]></Group_Name><Email_Address>z@example.com</Email_Address><IsLocked>1</IsLocked>"
               " </User></User_Collection></xs:add>");
}

std::string set_user(int id, const std::string& elements)
{
    const std::string number = std::to_string(id);
    return "Authorization: alice\r\n" +
           mxl(R"(<xs:set id="opid" resource-id="Users" resource-type="User_Collection">)"
               R"(<User_Collection><User id=")" +
               number + R"(" resource-id=")" + number + R"(" resource-type="User"><User_Id>)" + number + "</User_Id>" +
               elements + "</User></User_Collection></xs:set>");
}

std::string delete_user(const std::string& id)
{
    return mxl(R"(<xs:delete id="opid" resource-id=")" + id +
               R"(" resource-type="User" c-resource-id="Users" c-resource-type="User_Collection">)"
               "<keep_home_folder>1</keep_home_folder></xs:delete>");
}

std::string find_user(const std::string& name)
{
    return mxl(R"(<xs:query id="opid" resource-id="" resource-type="User_Collection"><xs:qualifier>)"
               R"(<xs:page direction="1" start-index="20"/></xs:qualifier><xs:criterion>)"
               R"(<xs:equal property="/User/User_Name/"><xs:value><![CDATA[)" +
               name + "]]></xs:value></xs:equal></xs:criterion></xs:query>");
}

std::string add_remote(const std::string& attributes)
{
    return mxl(R"(<xs:add id="opid" resource-type="User:Remote:App"> <User )" + attributes + "/></xs:add>");
}
