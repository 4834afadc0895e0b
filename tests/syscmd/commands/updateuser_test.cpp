// "updateuser": the rename, the local accounts in its way, the event, and the owner's file.
#include "tests/syscmd/operation_case.h"

namespace {

std::string saidHandler(const std::string& user)
{
    return "* syscmd:UpdateUserHandler " + user;
}

std::string saidUpdate(
    const std::string& name, const std::string& group, const std::string& email, const std::string& p2p)
{
    return "* [syscmd:UpdateUser] username=" + name + ", smbhash=SMB, syshash=$1$salt$system, group=" + group +
           ", email=" + email + " p2pusername=" + p2p;
}

Case updated(
    const char* name, const Texts& params, const Texts& statements, const Texts& requests, const std::string& check)
{
    return {
        .name = name,
        .params = params,
        .trace = joined({{"= code 0", saidHandler(params[1].substr(0, 31))}, statements, {"= response success"}}),
        .requests = requests,
        .check = check,
    };
}

Case notUpdated(const char* name, const Texts& params, const std::string& prepare, const Texts& statements,
    const Texts& requests, const std::string& check = "", const std::string& response = "UpdateUser failed")
{
    Case asked = updated(name, params, statements, requests, check);
    asked.prepare = prepare;
    asked.code = CODE_FAILED;
    asked.response = response;
    asked.trace.pop_back();
    asked.trace = joined({asked.trace, {"= code 1", "= response " + response}});
    return asked;
}

const Texts BOB = {"updateuser", "bob", PAIR, "bob@new", "bob"};
const Texts ALICE = {"updateuser", "alice", PAIR, "alice@new", "alice"};
/** bob's own account answers to the peer-to-peer name, and is moved out of the way first. */
const std::string SAID_BOB = saidUpdate("bob@new", "sky-hold", "bob@new", "b-p2p");
const Texts BOB_P2P = {"updateuser", "bob", PAIR, "bob@new", "b-p2p"};
const Texts BOB_SENT = {"[bob@new]", "[b-p2p]", "Authorization: alice\r\n"};

/** Succeeds when the events are this many, the last naming these three. */
std::string events(int count, const std::string& user, const std::string& new_user, const std::string& cloud_user)
{
    return "test \"$(wc -l < /var/lib/device/events.jsonl)\" = " + std::to_string(count) +
           " && tail -n 1 /var/lib/device/events.jsonl | grep -qE '^\\[\"shell\", \"boxwelld\", "
           "\"<xs:add-s resource-type=.*LOGMSG_SKYHOLD_RENAME_LOCAL_USER_IF_EXIST.* user=\\\\\"" +
           user + "\\\\\" newuser=\\\\\"" + new_user + "\\\\\" clouduser=\\\\\"" + cloud_user +
           "\\\\\"/></Log></xs:add-s>\", \"0\", \"0\"\\]$'";
}

const std::string ALICE_SAID = saidUpdate("alice@new", "admin", "alice@new", "a");
const Texts ALICE_P2P = {"updateuser", "alice", PAIR, "alice@new", "a"};
const Texts ALICE_SENT = {"[alice@new]", "[a]", "Authorization: alice\r\n"};

/** A rename of the owner whose file cannot be rewritten for want of one piece of information. */
Case withoutInformation(const char* name, const std::string& key)
{
    return notUpdated(name, ALICE_P2P, "rm /var/lib/device/info/" + key,
        {ALICE_SAID, "* ERROR [syscmd:UpdateUserHandler] failed updating skyhold owner file"}, ALICE_SENT,
        "getent passwd alice@new && ! test -e " OWNER_FILE);
}

INSTANTIATE_TEST_SUITE_P(UpdateUser, Operation,
    testing::Values(updated("renames", BOB_P2P, {SAID_BOB}, BOB_SENT,
                        "boxwelld show | grep -E '1002 +bob@new +sky-hold +unlocked +bob@new'"),
        updated("p2pNameIsTheNewName", {"updateuser", "bob", PAIR, "dave2", "dave2"},
            {saidUpdate("dave2", "sky-hold", "dave2", "dave2")}, {"Authorization"}, ""),
        updated("cutsToTheFirstBytes", {"updateuser", "bob", PAIR, NAME_40, "b-p2p"},
            {saidUpdate(NAME_31, "sky-hold", NAME_40, "b-p2p")},
            {"[" + NAME_31 + "]", "[b-p2p]", "<Email_Address><![CDATA[" + NAME_40 + "]]>"}, "getent passwd " + NAME_31),
        updated("localAccountGivesWay", {"updateuser", "bob", PAIR, "dave", "b-p2p"},
            {"* [syscmd:UpdateUser] username=dave~", saidUpdate("dave", "sky-hold", "dave", "b-p2p")},
            {"[dave]", "<User_Id>1004</User_Id>\t\t\t<User_Name>dave", "[b-p2p]",
                "<User_Id>1002</User_Id>\t\t\t<User_Name>dave</User_Name>"},
            events(1, "dave", "dave[0-9a-f]{4}", "dave") + " && getent passwd | grep -E '^dave[0-9a-f]{4}:x:1004:'"),
        updated("p2pNameOfAnotherAccount", {"updateuser", "bob", PAIR, "bob", "dave"},
            {"* [syscmd:UpdateUser] username=dave~", saidUpdate("bob", "sky-hold", "bob", "dave")},
            {"[dave]", "<User_Id>1004</User_Id>", "<User_Id>1002</User_Id>"},
            events(1, "dave", "dave[0-9a-f]{4}", "bob")),
        updated("ownersFileIsRewritten", ALICE_P2P, {ALICE_SAID}, ALICE_SENT,
            "test \"$(cat " OWNER_FILE ")\" = '<?xml version=\"1.0\" encoding=\"utf-8\"?>"
            "<registration><owner>alice@new</owner><model>BX-4200</model>"
            "<firmware_id>2.31.204</firmware_id><firmware_time>1731936000</firmware_time>"
            "<serial>BW24A1100317</serial><link_agent_id>LA-7C41-D09A</link_agent_id>"
            "<p2powner>alice-p2p</p2powner></registration>' && "
            "test \"$(tail -c 1 " OWNER_FILE ")\" = '>'"),
        notUpdated("renameOfTheOtherRefused", {"updateuser", "bob", PAIR, "bob", "dave"},
            order("refuse 'x already exists'", 1),
            {"* [syscmd:UpdateUser] username=dave~", "* ERROR [syscmd:UpdateUser]: Update failed",
                "* ERROR [syscmd:UpdateUser]: MXL error x already exists",
                "* ERROR [syscmd:renameLocalUserIfExists]: UpdateUser dave failed with code=-1",
                "* [syscmd:UpdateUserHandler]: failed resolving username conflict with local "
                "user for updated account bob"},
            {"[dave]", "<User_Id>1004</User_Id>"},
            events(1, "dave", "dave[0-9a-f]{4}", "bob") + " && getent passwd dave"),
        notUpdated("refused", BOB_P2P, order("refuse busy", 2),
            {SAID_BOB, "* ERROR [syscmd:UpdateUser]: Update failed", "* ERROR [syscmd:UpdateUser]: MXL error busy",
                "* ERROR [syscmd:UpdateUserHandler]: UpdateUser bob failed with code=-1"},
            BOB_SENT),
        notUpdated("callFailed", BOB_P2P, order("fail", 2),
            {SAID_BOB, "* ERROR [syscmd:UpdateUser]: process_request_bwdclient failed",
                "* ERROR [syscmd:UpdateUserHandler]: UpdateUser bob failed with code=-1"},
            BOB_SENT),
        notUpdated("noReply", BOB_P2P, order("no-reply", 2),
            {SAID_BOB, "* ERROR [syscmd:UpdateUser]: respond is not initialized",
                "* ERROR [syscmd:UpdateUserHandler]: UpdateUser bob failed with code=-1"},
            BOB_SENT),
        notUpdated("pairWithoutColon", {"updateuser", "bob", "YWJj", "bob@new", "bob@new"}, "",
            {"* ERROR [syscmd:UpdateUser] invalid hash value abc[YWJj]",
                "* ERROR [syscmd:UpdateUserHandler]: UpdateUser bob failed with code=-1"},
            {}, "getent passwd bob"),
        notUpdated("nobody", {"updateuser", "zoe", PAIR, "zoe@new", "zoe@new"}, "",
            {"* ERROR [syscmd:UpdateUserHandler]: Failed getting user zoe id"}, {}, "",
            "UpdateUser failed: unable to get local user id"),
        withoutInformation("noModel", "Model"), withoutInformation("noFirmwareVersion", "Firmware_Version"),
        withoutInformation("noFirmwareTime", "Firmware_Time"), withoutInformation("noSerial", "Serial"),
        Case{
            .name = "byAMemberOfAnOwnerlessDevice",
            .params = BOB_P2P,
            .credentials = "bob:secret",
            .prepare = "rm " OWNER_FILE,
            .code = CODE_FAILED,
            .response = "UpdateUser failed",
            .trace = {"= code 0", saidHandler("bob"), "* ERROR [syscmd:UpdateUser]: owner file unreadable",
                "* ERROR [syscmd:UpdateUserHandler]: UpdateUser bob failed with code=-1", "= code 1",
                "= response UpdateUser failed"},
            .requests = {"[bob]", "[bob@new]", "[b-p2p]"},
        },
        Case{
            .name = "needsFourParameters",
            .params = {"updateuser", "bob", PAIR, "bob@new"},
            .code = CODE_FAILED,
            .response = "Update User: error reading username/password/email params from request",
            .trace = {"= code 0",
                "* ERROR [syscmd:UpdateUserHandler]: Update User: error reading "
                "username/password/email params from request",
                "= code 1",
                "= response Update User: error reading username/password/email params from "
                "request"},
        }),
    caseName);

} // namespace
