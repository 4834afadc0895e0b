// "updateuser": the rename, the local accounts in its way, the event, and the owner's file.
#include "tests/syscmd/operation_case.h"

namespace {

/** The exchange of an update of which INFO tells. */
Trace exchanged(const Said& info, int exchange)
{
    return {
        info, said("UpdateUser: syscmd:request", sent(exchange)), said("UpdateUser: syscmd:respond", answer(exchange))};
}

/** The change that the commands of this file ask for. */
Said changing(const std::string& name, const std::string& group, const std::string& email, const std::string& p2p)
{
    return said("UpdateUser: syshash=%s, group=%s, email", name, "SMB", "$1$salt$system", group, email, p2p);
}

/** What a name that gives way ends in: drawn by a generator that the second seeds. */
const std::string DIGITS = [] {
    srand(NOW);
    std::string digits;
    while (digits.size() < 4)
        digits += "0123456789abcdef"[rand() % 16];
    return digits;
}();
const std::string GIVEN = "dave" + DIGITS;

/** The exchange that gives the account in the way its name. */
Trace renaming(const std::string& given, int exchange)
{
    return exchanged(said("UpdateUser: in the way", given), exchange);
}

Case updated(
    const char* name, const Texts& params, const Trace& statements, const Texts& requests, const std::string& check)
{
    return {
        .name = name,
        .params = params,
        .trace = {"code 0", said("UpdateUserHandler: the account that is to change", params[1].substr(0, 31)),
            statements, {"response success"}},
        .requests = requests,
        .check = check,
    };
}

Case notUpdated(const char* name, const Texts& params, const std::string& prepare, const Trace& statements,
    const Texts& requests, const std::string& check = "", const std::string& response = "UpdateUser failed")
{
    Case asked = updated(name, params, statements, requests, check);
    asked.prepare = prepare;
    asked.code = CODE_FAILED;
    asked.response = response;
    asked.trace.pop_back();
    asked.trace = {asked.trace, "code 1", "response " + response};
    return asked;
}

const Texts BOB = {"updateuser", "bob", PAIR, "bob@new", "b-p2p"};
const Texts BOB_SENT = {"[bob@new]", "[b-p2p]", "Authorization: alice\r\n"};
const Said BOB_INFO = changing("bob@new", "sky-hold", "bob@new", "b-p2p");
/** Nobody bears the new name, nor the peer-to-peer user's. */
const Trace BOB_ASKED = {asking("bob@new"), asking("b-p2p")};
const Trace BOB_FAILED = {said("UpdateUserHandler: UpdateUser %s failed", "bob", -1)};

/** Succeeds when the events are this many, the last naming these three. */
std::string events(int count, const std::string& user, const std::string& new_user, const std::string& cloud_user)
{
    return "test \"$(wc -l < /var/lib/device/events.jsonl)\" = " + std::to_string(count) +
           R"x( && test "$(tail -n 1 /var/lib/device/events.jsonl)" = '["shell", "boxwelld", "<xs:add-s )x"
           R"(resource-type=\"Log\" resource-id=\"Log\"><Log severity=\"warning\" )"
           R"(message-tag=\"LOGMSG_SKYHOLD_RENAME_LOCAL_USER_IF_EXIST\" category=\"system\"><args user=\")" +
           user + R"(\" newuser=\")" + new_user + R"(\" clouduser=\")" + cloud_user +
           R"(\"/></Log></xs:add-s>", "0", "0"]')";
}

const Texts ALICE = {"updateuser", "alice", PAIR, "alice@new", "a"};
const Texts ALICE_SENT = {"[alice@new]", "[a]", "Authorization: alice\r\n"};
const Trace ALICE_SAID = {
    asking("alice@new"), asking("a"), exchanged(changing("alice@new", "admin", "alice@new", "a"), 2)};

/** A rename of the owner whose file cannot be rewritten for want of one piece of information. */
Case withoutInformation(const char* name, const std::string& key)
{
    return notUpdated(name, ALICE, "rm /var/lib/device/info/" + key,
        {ALICE_SAID, said("UpdateUserHandler: owner file")}, ALICE_SENT,
        "getent passwd alice@new && ! test -e " OWNER_FILE);
}

/** Success for an owner file of these two elements. */
std::string ownerFile(const std::string& owner, const std::string& p2powner)
{
    return "test \"$(cat " OWNER_FILE "; echo .)\" = '<?xml version=\"1.0\" encoding=\"utf-8\"?>"
           "<registration><owner>" +
           owner +
           "</owner><model>BX-4200</model><firmware_id>2.31.204</firmware_id><firmware_time>1731936000</firmware_time>"
           "<serial>BW24A1100317</serial><link_agent_id>LA-7C41-D09A</link_agent_id><p2powner>" +
           p2powner + "</p2powner></registration>.'";
}

/** An update of an account that is not the owner's, though its login is. */
Case notTheOwner(const char* name, const std::string& owner, const std::string& user)
{
    Case asked =
        updated(name, {"updateuser", user, PAIR, "new", "new"}, exchanged(changing("new", "sky-hold", "new", "new"), 0),
            {"Authorization: " + owner.substr(0, 31) + "\r\n"}, "grep -q '<owner>" + owner + "<' " OWNER_FILE);
    asked.credentials = user + ":x";
    asked.prepare = R"(echo '{"groups":[{"name":"sky-hold","id":2001}],"accounts":[{"name":")" + user +
                    R"(","id":1001,"group":"sky-hold"}]}' | boxwelld seed -; echo '<owner>)" + owner +
                    "</owner>' > " OWNER_FILE;
    asked.access = {access(user, 1, 1)};
    return asked;
}

Case emptyRemoteOwner()
{
    Case asked = updated("emptyRemoteOwnerStays", ALICE, ALICE_SAID, ALICE_SENT, ownerFile("alice@new", ""));
    asked.prepare = "echo '<owner>alice</owner><p2powner></p2powner>' > " OWNER_FILE;
    return asked;
}

INSTANTIATE_TEST_SUITE_P(UpdateUser, Operation,
    testing::Values(updated("renames", BOB, {BOB_ASKED, exchanged(BOB_INFO, 2)}, BOB_SENT,
                        "boxwelld show | grep -E '1002 +bob@new +sky-hold +unlocked +bob@new'"),
        updated("p2pNameIsTheNewName", {"updateuser", "bob", PAIR, "dave2", "dave2"},
            exchanged(changing("dave2", "sky-hold", "dave2", "dave2"), 0), {"Authorization"}, ""),
        updated("nothingIsRenamedNorUnlocked", {"updateuser", "carol", PAIR, "carol", "carol"},
            exchanged(changing("carol", "sky-hold", "carol", "carol"), 0), {"Authorization"},
            "boxwelld show | grep -E 'carol +sky-hold +locked'"),
        updated("cutsToTheFirstBytes", {"updateuser", "bob", PAIR, NAME_40, "b-p2p"},
            {asking(NAME_31), asking("b-p2p"), exchanged(changing(NAME_31, "sky-hold", NAME_40, "b-p2p"), 2)},
            {"[" + NAME_31 + "]", "[b-p2p]", "<Email_Address><![CDATA[" + NAME_40 + "]]>"}, "getent passwd " + NAME_31),
        updated("localAccountGivesWay", {"updateuser", "bob", PAIR, "dave", "b-p2p"},
            {asking("dave"), renaming(GIVEN, 1), asking("b-p2p"),
                exchanged(changing("dave", "sky-hold", "dave", "b-p2p"), 3)},
            {"[dave]", "<User_Id>1004</User_Id>\t\t\t<User_Name>dave", "[b-p2p]",
                "<User_Id>1002</User_Id>\t\t\t<User_Name>dave</User_Name>"},
            events(1, "dave", GIVEN, "dave") + " && getent passwd | grep '^" + GIVEN + ":x:1004:'"),
        updated("p2pNameOfAnotherAccountWhichKeepsItsAddress", {"updateuser", "bob", PAIR, "bob", "carol"},
            {asking("carol"), renaming("carol" + DIGITS, 1), exchanged(changing("bob", "sky-hold", "bob", "carol"), 2)},
            {"[carol]", "<User_Id>1003</User_Id>", "<User_Id>1002</User_Id>"},
            events(1, "carol", "carol" + DIGITS, "bob") + " && boxwelld show | grep -E '1003 +carol" + DIGITS +
                " +sky-hold +locked +carol@example.com'"),
        updated("ownersFileIsRewritten", ALICE, ALICE_SAID, ALICE_SENT, ownerFile("alice@new", "alice-p2p")),
        emptyRemoteOwner(),
        updated("p2pNameInOtherCase", {"updateuser", "bob", PAIR, "bob", "Bob"},
            {asking("Bob"), exchanged(changing("bob", "sky-hold", "bob", "Bob"), 1)}, {"[Bob]", "Authorization"}, ""),
        updated("p2pNameOfOtherLastBytes", {"updateuser", "bob", PAIR, NAME_31, NAME_31.substr(0, 30) + "z"},
            {asking(NAME_31), asking(NAME_31.substr(0, 30) + "z"),
                exchanged(changing(NAME_31, "sky-hold", NAME_31, NAME_31.substr(0, 30) + "z"), 2)},
            {"[" + NAME_31 + "]", "[" + NAME_31.substr(0, 30) + "z]", "Authorization"}, ""),
        notUpdated("renameOfTheOtherRefused", {"updateuser", "bob", PAIR, NAME_40, "dave"},
            order("refuse 'x already exists'", 2),
            {asking(NAME_31), asking("dave"), renaming(GIVEN, 2), said("UpdateUser: the name is taken"),
                said("UpdateUser: MXL error", "x already exists"),
                said("renameLocalUserIfExists: failed with", "dave", -1),
                said("UpdateUserHandler: failed resolving", NAME_40)},
            {"[" + NAME_31 + "]", "[dave]", "<User_Id>1004</User_Id>"},
            events(1, "dave", GIVEN, NAME_31) + " && getent passwd dave"),
        notTheOwner("ownerInOtherCase", "Alice", "alice"), notTheOwner("longOwner", NAME_40, NAME_31),
        notUpdated("firstRenamesFailureIsForgotten", {"updateuser", "bob", PAIR, "dave", "b-p2p"},
            order("refuse busy", 1),
            {asking("dave"), renaming(GIVEN, 1), said("UpdateUser: refused: another"),
                said("UpdateUser: MXL error", "busy"), said("renameLocalUserIfExists: failed with", "dave", -1),
                asking("b-p2p"), exchanged(changing("dave", "sky-hold", "dave", "b-p2p"), 3),
                said("UpdateUser: the name is taken"), said("UpdateUser: MXL error", "User dave already exists"),
                BOB_FAILED},
            {"[dave]", "<User_Id>1004</User_Id>", "[b-p2p]", "<User_Id>1002</User_Id>"},
            events(1, "dave", GIVEN, "dave") + " && getent passwd dave"),
        notUpdated("refused", BOB, order("refuse busy", 2),
            {BOB_ASKED, exchanged(BOB_INFO, 2), said("UpdateUser: refused: another"),
                said("UpdateUser: MXL error", "busy"), BOB_FAILED},
            BOB_SENT),
        notUpdated("callFailed", BOB, order("fail", 2),
            {BOB_ASKED, BOB_INFO, said("UpdateUser: syscmd:request", sent(2)),
                said("UpdateUser: process_request_bwdclient"), BOB_FAILED},
            BOB_SENT),
        notUpdated("noReply", BOB, order("no-reply", 2),
            {BOB_ASKED, BOB_INFO, said("UpdateUser: syscmd:request", sent(2)),
                said("UpdateUser: respond is not initialized"), BOB_FAILED},
            BOB_SENT),
        notUpdated("pairWithoutColon", {"updateuser", "bob", "YWJj", "bob@new", "bob@new"}, "",
            {said("UpdateUser: invalid hash value", "abc", "YWJj"), BOB_FAILED}, {}, "getent passwd bob"),
        notUpdated("nobody", {"updateuser", "zoe", PAIR, "zoe@new", "zoe@new"}, "",
            {said("UpdateUserHandler: Failed getting user", "zoe")}, {}, "",
            "UpdateUser failed: unable to get local user id"),
        notUpdated("cutsThePresentName", {"updateuser", NAME_40, PAIR, "zoe@new", "zoe@new"}, "",
            {said("UpdateUserHandler: Failed getting user", NAME_31)}, {}, "",
            "UpdateUser failed: unable to get local user id"),
        withoutInformation("noModel", "Model"), withoutInformation("noFirmwareVersion", "Firmware_Version"),
        withoutInformation("noFirmwareTime", "Firmware_Time"), withoutInformation("noSerial", "Serial"),
        Case{
            .name = "byAMemberOfAnOwnerlessDevice",
            .params = BOB,
            .credentials = "bob:secret",
            .prepare = "rm " OWNER_FILE,
            .code = CODE_FAILED,
            .response = "UpdateUser failed",
            .access = {access("bob", 0, 1)},
            .trace = {"code 0", said("UpdateUserHandler: the account that is to change", "bob"), BOB_ASKED,
                said("UpdateUser: owner file unreadable"), BOB_FAILED, "code 1", "response UpdateUser failed"},
            .requests = {"[bob]", "[bob@new]", "[b-p2p]"},
        },
        lacking("needsAllParameters", {"updateuser", "bob", PAIR, "bob@new"})),
    caseName);

} // namespace
