// What no command reaches: routines called directly, on the private device.
#include "common/io.h"
#include "common/isowner.h"
#include "syscmd/add_account.h"
#include "syscmd/add_remote_user.h"
#include "syscmd/handler.h"
#include "syscmd/local_conflicts.h"
#include "syscmd/local_sessions.h"
#include "syscmd/upgrade_to_sso.h"
#include "syscmd/user_delete.h"
#include "syscmd/user_query.h"
#include "syscmd/user_update.h"
#include "tests/plugin/device.h"

#include <gtest/gtest.h>
#include <utime.h>

#include <filesystem>
#include <fstream>

namespace {

using Texts = std::vector<std::string>;

class Routines : public testing::Test {
  protected:
    void SetUp() override
    {
        MAX_LOG_LEVEL = 7;
        resetDevice();
    }
};

TEST_F(Routines, placeholderPairOfAnAccountWithoutPassword)
{
    EXPECT_EQ(AddUser("zoe", nullptr, "z@x", "User"), SUCCESS);
    const std::string sent = requests().at(0);
    EXPECT_NE(sent.find("<SmbHash><![CDATA[7C41D09AQ3B8E2F65A0D9C14E7B3F820]]>"), std::string::npos);
    EXPECT_NE(sent.find("<SysHash><![CDATA[$1$Qa7Lm2Xp$Zr4.hT9wYc1KbN3sVe8Fo0]]>"), std::string::npos);
}

TEST_F(Routines, hashesWithoutCloudUserUnlock)
{
    const std::string pair = base64("a:b:c");
    EXPECT_EQ(UpdateUser("1003", "carol", pair.c_str(), "sky-hold", "c@x", nullptr), SUCCESS);
    const std::string sent = requests().at(0);
    EXPECT_NE(
        sent.find("<P2PUserName><![CDATA[(null)]]></P2PUserName>\t\t\t<IsLocked>0</IsLocked> "), std::string::npos);
    EXPECT_NE(sent.find("<SysHash><![CDATA[b:c]]>"), std::string::npos);
    EXPECT_EQ(fileStatements().at(0).text,
        "[syscmd:UpdateUser] username=carol, smbhash=a, syshash=b:c, group=sky-hold email=c@x "
        "p2pusername=(null)\n");
    shell("boxwelld show | grep -E 'carol +sky-hold +unlocked'");
}

TEST_F(Routines, authorityIsCut)
{
    shell("printf '<owner>abcdefghijklmnopqrstuvwxyz0123456789</owner>' > " OWNER_FILE);
    EXPECT_EQ(UpdateUser("1003", "carol", nullptr, nullptr, "", nullptr), SUCCESS);
    EXPECT_EQ(requests().at(0).rfind("Authorization: abcdefghijklmnopqrstuvwxyz01234\r\n<?xml", 0), 0U);
}

TEST_F(Routines, nullArgumentsAreLoggedAndRefused)
{
    char* text = nullptr;
    int is_owner = 0;
    int is_sh = 0;
    std::string response = "untouched";
    EXPECT_EQ(SendMXLtoBWD(nullptr, "x"), -1);
    EXPECT_EQ(GetMXLStatus(&text, nullptr), -1);
    EXPECT_EQ(GetMXLErrorDetail(&text, nullptr), -1);
    EXPECT_EQ(GetUserIDByUsername(&text, nullptr), -1);
    EXPECT_EQ(GetUserData(&text, &text, nullptr, "x"), -1);
    EXPECT_EQ(UpdateUser("1", "x", nullptr, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(DelNetwork(nullptr), -1);
    EXPECT_EQ(DelUser("x", nullptr, ANY_ACCOUNT), -1);
    EXPECT_EQ(AddUser("x", nullptr, nullptr, "User"), -1);
    EXPECT_EQ(AddNetwork(nullptr, ""), -1);
    EXPECT_EQ(resolveLocalUserConflicts("x", nullptr, nullptr), -1);
    EXPECT_EQ(renameLocalUserIfExists(nullptr, "x"), -1);
    EXPECT_EQ(UpgradeUserToSSO("1", nullptr, "x", nullptr, "x"), UPGRADE_INVALID_ARGUMENT);
    EXPECT_EQ(UpdateLocalSessionRecords("x", "x", nullptr), -1);
    EXPECT_EQ(AuthenticateUser("adduser", nullptr, is_owner, is_sh), -2);
    for (auto* handler : {AddAccountHandler, AddRemoteUserHandler, UnregisterHandler, DeleteAccountHandler,
             UpgradeUserToSSOHandler, UpdateUserHandler, InitLocalSessionHandler})
        handler(nullptr, response);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(response, "untouched");

    Texts said;
    for (const Statement& statement : fileStatements())
        said.push_back((statement.line < 274 ? "" : std::to_string(statement.line) + " ") + statement.text);
    EXPECT_EQ(said,
        (Texts{"ERROR [syscmd:SendMXLtoBWD] invalid input arguments\n",
            "ERROR [syscmd:GetMXLStatus]: invalid input arguments\n",
            "ERROR [syscmd:GetMXLErrorDetail]: invalid input arguments\n",
            "ERROR [syscmd:GetUserIDByUsername]: invalid input arguments\n",
            "ERROR [syscmd:GetUserData]: invalid input arguments\n",
            "ERROR [syscmd:UpdateUser] invalid input arguments\n",
            "ERROR [syscmd:DelNetwork]: invalid input arguments\n", "ERROR [syscmd:DelUser]: invalid input arguments\n",
            "435 ERROR [syscmd:AddUser]: invalid input arguments\n",
            "274 ERROR [syscmd:AddNetwork]: invalid input arguments\n",
            "ERROR [syscmd:resolveLocalUserConflicts]: invalid input arguments\n",
            "ERROR [syscmd:renameLocalUserIfExists]: invalid input arguments\n",
            "975 ERROR [syscmd:UpgradeUserToSSO] invalid input arguments\n",
            "ERROR [syscmd:UpdateLocalSessionRecords] invalid input arguments\n",
            "1251 ERROR [syscmd:AuthenticateUser]: invalid arguments specified",
            "1295 [syscmd:AddAccountHandler] invalid input arguments",
            "1334 [syscmd:AddRemoteUserHandler] invalid input arguments",
            "1367 [syscmd:UnregisterHandler] invalid input arguments",
            "1391 [syscmd:DeleteAccountHandler] invalid input arguments",
            "1434 [syscmd:UpgradeUserToSSOHandler] invalid input arguments",
            "[syscmd:UpdateUserHandler] invalid input arguments",
            "[syscmd:InitLocalSessionHandler] invalid input arguments"}));
}

TEST_F(Routines, idOfTheSystemsDatabase)
{
    char* id = nullptr;
    EXPECT_EQ(GetUserIDByUsername(&id, "root"), SUCCESS);
    EXPECT_STREQ(id, "0");
    free(std::exchange(id, nullptr));
    EXPECT_EQ(GetUserIDByUsername(&id, "nobody-of-that-name"), -1);
    EXPECT_EQ(id, nullptr);
    EXPECT_TRUE(fileStatements().empty());
}

TEST_F(Routines, twoRenamesWithinASecondDrawTheSameDigits)
{
    time_t began = 0;
    do { // until both fall into one second
        shell("boxwelld seed " SEED_FILE);
        began = time(nullptr);
        EXPECT_EQ(renameLocalUserIfExists("bob", "cloud"), SUCCESS);
        EXPECT_EQ(renameLocalUserIfExists("carol", "cloud"), SUCCESS);
    } while (time(nullptr) != began);
    const auto name = [sent = requests()](std::size_t request) {
        const std::size_t begin = sent.at(request).find("<User_Name>") + 11;
        return sent[request].substr(begin, sent[request].find("</User_Name>") - begin);
    };
    EXPECT_EQ(name(1).substr(0, 3) + name(3).substr(0, 5), "bobcarol");
    EXPECT_EQ(name(1).substr(3), name(3).substr(5));
}

TEST_F(Routines, derivedNameKeeps27Bytes)
{
    shell(
        R"(echo '{"groups":[{"name":"share","id":2002}],"accounts":[{"name":"abcdefghijklmnopqrstuvwxyz0123","id":1001,"group":"share"}]}' | boxwelld seed -)");
    EXPECT_EQ(renameLocalUserIfExists("abcdefghijklmnopqrstuvwxyz0123", "cloud"), SUCCESS);
    shell("getent passwd | grep -E '^abcdefghijklmnopqrstuvwxyz0[0-9a-f]{4}:x:1001:'");
}

TEST_F(Routines, thousandsOfRecords)
{
    std::ofstream reply("/var/lib/device/reply");
    reply << R"(<xs:response status="success">)";
    for (int i = 0; i < 20000; ++i)
        reply << "<User id=\"" << i << "\"><User_Id>" << i << "</User_Id><Group_Name><![CDATA[g]]></Group_Name>"
              << "<User_Name><![CDATA[u" << i << "]]></User_Name><Email_Address><![CDATA[]]></Email_Address></User>";
    reply.close();
    shell("rm /var/log/shbroker.log; boxwelld order reply @/var/lib/device/reply --count 2");
    MAX_LOG_LEVEL = 0; // each record that does not match is a statement
    char* id = nullptr;
    char* group = nullptr;
    char* email = nullptr;
    ASSERT_EQ(GetUserData(&id, &group, &email, "u19999"), SUCCESS);
    EXPECT_STREQ(id, "19999");
    for (char** text : {&id, &group, &email})
        free(std::exchange(*text, nullptr));
    ASSERT_EQ(GetUserData(&id, &group, &email, "zoe"), SUCCESS);
    EXPECT_STREQ(id, "");
    EXPECT_STREQ(group, "g");
    for (char* text : {id, group, email})
        free(text);
    EXPECT_FALSE(std::filesystem::exists("/var/log/shbroker.log"));
}

TEST_F(Routines, ownerFileWithoutOptionalElements)
{
    shell("printf 'link_agent_id= x\\n' > /opt/linkhub/etc/linkagent.conf; "
          "printf 'BX error\\r\\r\\n' > /var/lib/device/info/Model");
    EXPECT_EQ(createOwnerFile(true, "a&<b", nullptr, OWNER_FILE), SUCCESS);
    EXPECT_EQ(shell("cat " OWNER_FILE), "<?xml version=\"1.0\" encoding=\"utf-8\"?><registration><owner>a&<b</owner>"
                                        "<model>BX error</model><firmware_id>2.31.204</firmware_id>"
                                        "<firmware_time>1731936000</firmware_time><serial>BW24A1100317</serial>"
                                        "<link_agent_id>id=</link_agent_id></registration>");
    shell("printf 'link_agent_\\nlink_agent_id \\n' > /opt/linkhub/etc/linkagent.conf");
    std::string value = "untouched";
    EXPECT_FALSE(readBoxwellInfoValue(std::string("Nothing"), value));
    EXPECT_EQ(value, "untouched");
    EXPECT_TRUE(readBoxwellInfoValue(std::string("Model"), value));
    EXPECT_EQ(value, "BX error");
    std::string xid = "untouched";
    shell("printf 'link_agent   link_agent_id' > /opt/linkhub/etc/linkagent.conf");
    EXPECT_FALSE(readXid(xid));
    EXPECT_EQ(xid, "untouched");
    for (const char* answer : {"x ERROR: y", "error:", "\\r\\n", ""}) {
        shell(std::string("printf '") + answer + "' > /var/lib/device/info/Serial");
        EXPECT_EQ(createOwnerFile(true, "a", "", OWNER_FILE), -3) << answer;
        EXPECT_FALSE(std::filesystem::exists(OWNER_FILE));
    }
    shell("printf 'Error: 1' > /var/lib/device/info/Serial");
    EXPECT_EQ(createOwnerFile(true, "a", "", OWNER_FILE), SUCCESS);
    shell("grep -q '<serial>Error: 1</serial>.*<p2powner></p2powner></registration>$' " OWNER_FILE);
    EXPECT_EQ(createOwnerFile(true, "a", "", "/nowhere/file"), -1);
    std::unique_ptr<char, void (*)(void*)> content(aGetFile("/%s", "var/lib/device/info/Serial"), free);
    EXPECT_STREQ(content.get(), "Error: 1");
    EXPECT_EQ(aGetFile("/%s", "nowhere"), nullptr);
    std::unique_ptr<FILE, int (*)(FILE*)> serial(fopen("/var/lib/device/info/Serial", "r"), fclose);
    content.reset(aGetFileContent(fileno(serial.get())));
    EXPECT_STREQ(content.get(), "Error: 1");
    char* reply = nullptr;
    EXPECT_EQ(SendMXLtoBWD(&reply, "<none/>"), SUCCESS); // refused, but answered
    free(reply);
    EXPECT_EQ(SendMXLtoBWD(&reply, nullptr), -1);
    EXPECT_EQ(isLocked(nullptr, &reply), 1);
    shell("cp /var/lib/device/fresh/info/* /var/lib/device/info; "
          "echo 'agent_id = LA-7C41-D09A  # link_agent_id' > /opt/linkhub/etc/linkagent.conf");
    EXPECT_TRUE(readXid(xid));
    EXPECT_EQ(xid, "LA-7C41-D09A");
}

TEST_F(Routines, aRecordOfExactlyADayIsKept)
{
    const char* path = LOCAL_SESSION_DIRECTORY "/t";
    for (const int age : {86400, 86401}) {
        time_t now = 0;
        do { // until the sweep fell into the second that the record's age was counted from
            ASSERT_EQ(UpdateLocalSessionRecords("t", "bob", "1"), SUCCESS);
            now = time(nullptr);
            const utimbuf times = {now - age, now - age};
            ASSERT_EQ(utime(path, &times), 0);
            EXPECT_EQ(CleanupObsoleteLocalSessions(nullptr), SUCCESS);
        } while (time(nullptr) != now);
        EXPECT_EQ(std::filesystem::exists(path), age == 86400);
    }
}

struct Logged {
    int max_level;
    LogLevel level;
    std::string text;
    Texts journal; // without the prefix of the first
};

TEST_F(Routines, statementsGoWhereTheirLevelAndLinesSay)
{
    const std::string large(70000, 'x');
    const Logged table[] = {
        {3, LogLevel::Error, "one\n", {"one"}},
        {2, LogLevel::Error, "one\n", {}},
        {5, LogLevel::Info, "one\n", {}},
        {6, LogLevel::Info, "one\n", {"one"}},
        {6, LogLevel::Debug, "one\n", {}},
        {7, LogLevel::Debug, "one\ntwo\n", {"one", "two"}},
        {7, LogLevel::Debug, "one\r\ntwo", {"one"}},
        {7, LogLevel::Debug, "one\r\r\n\ntwo\n", {"one", "two"}},
        {7, LogLevel::Error, "no line end", {}},
        {7, LogLevel::Error, "\n", {""}},
        {7, LogLevel::Error, large + "\n", {large}},
    };
    for (const auto& [max_level, level, text, journal] : table) {
        shell(": > /var/log/shbroker.log");
        MAX_LOG_LEVEL = max_level;
        errno = EXDEV;
        logStatement(level, "unit.cpp", 42, "someFunction", "%s", text.c_str());
        EXPECT_EQ(errno, EXDEV);

        const auto file = fileStatements();
        ASSERT_EQ(file.size(), 1U);
        EXPECT_EQ(file[0].text, text);
        EXPECT_EQ(file[0].file + std::to_string(file[0].line), "unit.cpp42");
        const std::vector<Statement> entries = journalStatements();
        ASSERT_EQ(entries.size(), journal.size()) << text.substr(0, 80);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const std::string prefix = i == 0 ? file[0].level + ":unit.cpp:42: " : "";
            EXPECT_EQ(entries[i].text, journal[i].empty() ? prefix.substr(0, prefix.size() - 1) : prefix + journal[i]);
            EXPECT_EQ(entries[i].function, "someFunction");
        }
    }
}

TEST_F(Routines, aLogFileThatCannotBeOpenedIsPassedOver)
{
    shell("rm /var/log/shbroker.log; mkdir /var/log/shbroker.log");
    LOG(Error, "to the journal only\n");
    EXPECT_EQ(journalStatements().size(), 1U);
    shell("rmdir /var/log/shbroker.log");
}

} // namespace
