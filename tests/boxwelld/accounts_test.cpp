// What each transaction does to the accounts, and that passwd and group follow.
#include "tests/boxwelld/daemon.h"

#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>

#include <filesystem>
#include <map>
#include <memory>

using testing::HasSubstr;

namespace {

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

/** What passwd and group say, read by the C library, in the form in which the state tells it. */
Json account_files(const Daemon& daemon)
{
    std::map<gid_t, std::string> groups;
    std::map<std::string, std::vector<std::string>> member_of;
    const File group_file(fopen(daemon.path("group").c_str(), "re"), fclose);
    while (const group* entry = fgetgrent(group_file.get())) {
        groups[entry->gr_gid] = entry->gr_name;
        for (char** member = entry->gr_mem; *member != nullptr; ++member)
            member_of[*member].emplace_back(entry->gr_name);
    }
    Json found;
    const File passwd_file(fopen(daemon.path("passwd").c_str(), "re"), fclose);
    while (const passwd* entry = fgetpwent(passwd_file.get())) {
        const std::string name = entry->pw_name;
        EXPECT_EQ(std::string(entry->pw_passwd), "x");
        if (entry->pw_uid > 1000 && entry->pw_uid < 65534) {
            EXPECT_EQ(entry->pw_dir, "/home/" + name);
            EXPECT_STREQ(entry->pw_shell, "/bin/false");
        }
        found[name] = {entry->pw_uid, groups[entry->pw_gid], member_of[name]};
    }
    return found;
}

void expect_in_step(const Daemon& daemon, const Json& state)
{
    Json expected = {{"root", {0, "root", Json::array()}}, {"nobody", {65534, "", Json::array()}}};
    for (const Json& account : state["accounts"])
        expected[account["name"]] = {account["id"], account["group"], account["member_of"]};
    EXPECT_EQ(account_files(daemon), expected);
}

/** Elements within each other, all of which have an attribute that looks like more. */
std::string nested(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "<a b='</a>'>";
    return text;
}

std::string attributes(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += " a" + std::to_string(i) + "=\"=/>\"";
    return text;
}

Json account(const Json& state, int id)
{
    for (const Json& account : state["accounts"])
        if (account["id"] == id)
            return account;
    return {};
}

} // namespace

TEST(Accounts, AcceptedRequestsChangeWhatTheySayAndNothingElse)
{
    const Daemon daemon;
    const Json before = daemon.state();
    const struct {
        std::string request;
        int id;
        const char* change; // a merge patch to the account before; a full account for a new one
    } cases[] = {
        {add_user("zoë.o@example.com"), 1004, R"({"name": "zoë.o@example.com", "id": 1004,
            "group": "sky-hold", "locked": true, "email": "z@example.com", "smb_hash": "S",
            "sys_hash": "$1$h", "p2p_user_name": "", "member_of": []})"},
        {add_user(std::string(31, 'x')), 1004, R"({"id": 1004, "locked": true,
            "name": "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", "group": "sky-hold", "smb_hash": "S",
            "email": "z@example.com", "sys_hash": "$1$h", "p2p_user_name": "", "member_of": []})"},
        {set_user(1003, "<User_Name>a&amp;b</User_Name><Email_Address/>"), 1003, R"({"name": "a&b"})"},
        {set_user(1003, "<User_Name>dave</User_Name><IsLocked>0</IsLocked> "), 1003, R"({"locked": false})"},
        {set_user(1002, "<User_Name>b</User_Name><SmbHash>1</SmbHash><SysHash>2:3</SysHash>"
                        "<Group_Name>admin</Group_Name><Email_Address><![CDATA[<&>]]>"
                        "</Email_Address><P2PUserName>(null)</P2PUserName>"),
            1002, R"json({"name": "b", "smb_hash": "1", "sys_hash": "2:3", "group": "admin",
            "email": "<&>", "p2p_user_name": "(null)"})json"},
        {delete_user("1003"), 1003, "null"},
    };
    for (const auto& [request, id, change] : cases) {
        SCOPED_TRACE(request);
        daemon.seed();
        Json expected = account(before, id);
        expected.merge_patch(Json::parse(change));
        EXPECT_THAT(call(request).reply, HasSubstr(R"(<xs:response id="opid" status="success">)"));
        const Json after = daemon.state();
        EXPECT_EQ(account(after, id), expected);
        expect_in_step(daemon, after);
    }
}

TEST(Accounts, RefusedRequestsTellWhyAndChangeNothing)
{
    const std::string add_bob = add_user("bob");
    const struct {
        std::string request;
        const char* detail;
    } cases[] = {
        {add_bob, "User bob already exists"},
        {add_user("root"), "User root already exists"},
        {set_user(1002, "<Email_Address>x</Email_Address><User_Name>alice</User_Name>"), "User alice already exists"},
        {set_user(77, "<User_Name>x</User_Name>"), "No user with id 77"},
        {delete_user("77"), "No user with id 77"},
        {delete_user("x"), "Invalid user id x"},
        {add_user("zoe", "none"), "Unknown group none"},
        {set_user(1002, "<User_Name>b</User_Name><Group_Name/>"), "Unknown group "},
        {add_user(""), "Invalid user name: it is empty"},
        {add_user("a:b"), "Invalid user name: a:b"},
        {add_user("../a"), "Invalid user name: ../a"},
        {add_user("#a"), "Invalid user name: #a"},
        {add_user("a\nb"), "user name holds a control character"},
        {add_user("a]]]]><![CDATA[>b"), "user name holds the end of a CDATA section"},
        {add_user(std::string(32, 'x')), "is longer than 31 bytes"},
        {set_user(1002, "<IsLocked>yes</IsLocked>"), "IsLocked is neither 0 nor 1"},
        {set_user(1002, "<Emial><![CDATA[" + nested(70) + "]]></Emial><!--" + nested(70) + "-->"),
            "User holds the unknown element Emial"},
        {set_user(1002, "<SysHash/><SysHash/>"), "User holds SysHash twice"},
        {add_remote(R"(FullName="" UserName="bob")"), "[User already present]"},
        {add_remote(R"(FullName="" UserName="")"), "Invalid remote user name"},
        {add_remote(R"(FullName="" UserName="a"b")"), "Malformed request: line 1: "},
        {"", "Malformed request: "},
        {"Authorization: alice", "Malformed request: the authorization line has no end"},
        {add_bob.substr(0, add_bob.size() - 3), "Malformed request: line 1: "},
        {add_user("\xC3"), "Malformed request: line 1: Input is not proper UTF-8"},
        {"<?xml version=\"1.0\" encoding=\"EUC-JP\"?><a>\xFF\xFF</a>", "[Malformed request: input conversion failed"},
        {"<?xml version=\"1.0\" encoding=\"none\"?><a/>", "Malformed request: line 1: Unsupported encoding none"},
        {mxl(nested(65)), "Too large a request: elements within each other, more than 64"},
        {mxl(nested(62)), "Malformed request: "},
        {mxl("<xs:add" + attributes(60000) + "/>"), "Too large a request: attributes of an element, more than 64"},
        {mxl("<xs:add" + attributes(65) + "/>"), "Too large a request: attributes of an element, more than 64"},
        {mxl("<xs:add" + attributes(64) + "/>"), "[add has no attribute id]"},
        {add_user(std::string(1 << 20, 'x')), "Too large a request: bytes, more than 1048576"},
        {add_user(std::string(1000000, 'x')), " is longer than 31 bytes"},
        {R"(<!DOCTYPE a [<!ENTITY b "c">]><a>&b;</a>)", "a document type is not accepted"},
        {"<a/>", "Unknown document a"},
        {mxl(""), "transaction must hold one operation"},
        {mxl(R"(<xs:set id="o" resource-type="Disk"/>)"), "operation set of resource type Disk"},
    };
    const Daemon daemon;
    const Json before = daemon.state();
    for (const auto& [request, detail] : cases) {
        SCOPED_TRACE(request);
        const std::string reply = call(request).reply;
        EXPECT_THAT(reply, HasSubstr(R"( status="failure"><xs:error-details><![CDATA[)"));
        EXPECT_THAT(reply, HasSubstr(detail));
    }
    EXPECT_EQ(daemon.state(), before);
    expect_in_step(daemon, before);
}

TEST(Accounts, RemoteUsersAndTheCloudOwnerComeAndGo)
{
    const Daemon daemon;
    call(add_remote(R"(FullName="Z" Channel="4" UserName="zoe")"));
    call(mxl(R"(<xs:delete id="opid" resource-type="User:Remote:App"> <User FullName="")"
             R"( UserName="bob"/></xs:delete>)"));
    EXPECT_EQ(daemon.state()["remote_users"], Json::parse(R"([{"name": "zoe", "full_name": "Z"}])"));
    call(set_user(1001, "<User_Name>al</User_Name>"));
    EXPECT_EQ(daemon.state()["cloud_owner"], "al") << "the owner's account was renamed";
    call(mxl(R"(<xs:set id="7" resource-id="CloudOwner" resource-type="CloudOwner"><User id="0">)"
             "<User_Name></User_Name><Password></Password><Confirm>false</Confirm>"
             "<Keep_Home_Folder>1</Keep_Home_Folder></User></xs:set>"));
    EXPECT_EQ(daemon.state()["cloud_owner"], "");
}

TEST(Accounts, AFileThatCannotBeWrittenUndoesTheWholeTransaction)
{
    const Daemon daemon;
    const std::string passwd = daemon.read("passwd");
    std::filesystem::rename(daemon.path("group"), daemon.path("away"));
    EXPECT_THAT(call(delete_user("1002")).reply, HasSubstr("group: No such file or directory"));
    EXPECT_EQ(daemon.read("passwd"), passwd);
    std::filesystem::rename(daemon.path("away"), daemon.path("group"));
    const Json after = daemon.state();
    EXPECT_EQ(account(after, 1002)["name"], "bob");
    expect_in_step(daemon, after);
}

TEST(Accounts, ASectionWithoutItsEndIsNotRewritten)
{
    const std::string end = "# boxwelld: end\n";
    for (const char* name : {"passwd", "group"}) {
        const Daemon daemon;
        std::string text = daemon.read(name);
        text.erase(text.find(end), end.size()) += "eve:x:9:\n";
        daemon.write(name, text);
        const std::string detail = daemon.path(name) + ": the line \"# boxwelld: end\" is missing";
        EXPECT_THAT(call(delete_user("1003")).reply, HasSubstr(detail));
        EXPECT_EQ(daemon.read(name), text) << "eve is not the daemon's";
        EXPECT_EQ(account(daemon.state(), 1003)["name"], "dave");
    }
}
