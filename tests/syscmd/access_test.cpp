// Who may ask for what: credentials, owner file, lock flag, groups, and the table of operations.
#include "tests/syscmd/operation_case.h"

namespace {

/** The credentials' login as the check sees it. */
std::string loginOf(const std::string& credentials)
{
    const std::size_t colon = credentials.find(':');
    return colon == std::string::npos ? credentials : credentials.substr(0, std::min<std::size_t>(colon, 31));
}

/** A command that gets as far as its missing parameters. */
Case admitted(const char* name, const std::string& credentials, const std::string& prepare)
{
    Case asked = lacking(name, {"deleteuser"});
    asked.credentials = credentials;
    asked.prepare = prepare;
    asked.access = {access(loginOf(credentials), 1, 1)};
    return asked;
}

Case memberAdmitted(const char* name, const std::string& credentials, const std::string& prepare)
{
    Case asked = admitted(name, credentials, prepare);
    asked.access = {access(loginOf(credentials), 0, 1)};
    asked.requests = {"/User/User_Name/"};
    return asked;
}

Case denied(const char* name, const std::string& credentials, const std::string& prepare)
{
    const std::string login = loginOf(credentials);
    return {
        .name = name,
        .params = {"deleteuser", "bob", "bob"},
        .credentials = credentials,
        .prepare = prepare,
        .code = CODE_FAILED,
        .response = "access denied",
        .access = {access(login, 0, 0)},
        .trace = {said("AuthenticateUser: ACCESS DENIED", "deleteuser", login, 0, 0), "response access denied",
            "code 1"},
        .requests = {"<![CDATA[" + login + "]]>"},
        .check = "getent passwd bob",
    };
}

Case unknown(const char* name, const std::string& operation, const Trace& checked, const Texts& requests)
{
    return {
        .name = name,
        .params = {operation, "bob"},
        .credentials = "bob:x",
        .code = CODE_FAILED,
        .response = "operation unknown",
        .access = checked,
        .trace = {said("execute: 1644", operation.c_str()), "code 1", "response operation unknown"},
        .requests = requests,
    };
}

/** Shell that makes the owner file hold `text`. */
std::string owned(const std::string& text)
{
    return "printf '%s' '" + text + "' > " OWNER_FILE;
}

/** Shell that adds members to the cloud group. */
std::string listed(const std::string& names)
{
    return "sed \"s/^sky-hold:.*/&," + names +
           "/\" /etc/group > /tmp/group.$$; cat /tmp/group.$$ > /etc/group; rm /tmp/group.$$";
}

const std::string LOCK_REPLY = "<User_Name><![CDATA[bob]]></User_Name>";

INSTANTIATE_TEST_SUITE_P(Access, Operation,
    testing::Values(admitted("ownerInOtherCase", "Alice:secret", ""), admitted("remoteOwner", "ALICE-P2P:secret", ""),
        admitted("ownerWithoutRemoteOwner", "alice:", owned("<owner>alice</owner>")),
        admitted("ownerWithoutColon", "alice", ""), admitted("ownerUpToEndOfFile", "alice", owned("<owner>alice")),
        admitted("firstBytesOfALongLogin", NAME_40 + ":x", owned("<owner>" + NAME_31 + "</owner>")),
        admitted("firstBytesOfALongOwner", NAME_31 + ":x", owned("<owner>" + NAME_40 + "</owner>")),
        admitted("emptyLoginOfANamelessOwner", ":x", owned("<registration/>")),
        admitted("noCredentialsOfANamelessOwner", "", owned("<registration/>")),
        memberAdmitted("memberByPrimaryGroup", "bob:secret", ""),
        memberAdmitted("memberByList", "dave:secret", listed("Dave,dav,dave")),
        memberAdmitted("memberAsTheDaemonSpellsHim", "davey:secret",
            listed("dave") + "; " + order("reply '<User_Name><![CDATA[dave]]></User_Name>'")),
        memberAdmitted("memberOfALargeGroup", "dave:secret", listed("$(seq -s ,m 9000),dave")),
        memberAdmitted("passwordWithColon", "bob:secret:x", ""),
        memberAdmitted("lockReplyWithoutFlag", "bob:secret", order("reply '" + LOCK_REPLY + "'")),
        memberAdmitted("lockFlagOfNoNumber", "bob:secret", order("reply '<IsLocked>no</IsLocked>" + LOCK_REPLY + "'")),
        denied("longOwnerWithoutColon", NAME_40, owned("<owner>" + NAME_40 + "</owner>")),
        denied("longRemoteOwner", NAME_31 + ":x", owned("<p2powner>" + NAME_40 + "</p2powner>")),
        denied("lockedMember", "carol:secret", ""), denied("otherGroup", "dave:secret", ""),
        denied("listedOtherwise", "dave:secret", listed("Dave,dav,davey")), denied("stranger", "mallory:secret", ""),
        denied("ownerWithoutOwnerFile", "alice:secret", "rm " OWNER_FILE),
        denied("ownerWithEmptyOwnerFile", "alice:secret", ": > " OWNER_FILE), denied("emptyLogin", ":secret", ""),
        denied(
            "lockFlagBeyond32Bits", "bob:secret", order("reply '<IsLocked>4294967296</IsLocked>" + LOCK_REPLY + "'")),
        denied("lockQueryFailed", "bob:secret", order("fail")),
        denied("lockQueryUnanswered", "bob:secret", order("no-reply")),
        denied("lockReplyOfGarbage", "bob:secret", order("reply garbage")),
        unknown("memberAddsUser", "adduser", {access("bob", 0, 1)}, {"[bob]"}),
        unknown("memberAddsRemoteUser", "addremoteuser", {access("bob", 0, 1)}, {"[bob]"}),
        unknown("otherCase", "AddUser", {}, {}), unknown("bytesBehindANul", std::string("deleteuser\0x", 12), {}, {}),
        unknown("longerName", "deleteusers", {}, {}), unknown("emptyName", "", {}, {}),
        Case{
            .name = "noOperation",
            .params = {},
            .code = CODE_FAILED,
            .response = "getRequestParam() failed",
            .access = {},
            .trace = {said("execute: 1651"), "code 1", "response getRequestParam() failed"},
        }),
    caseName);

} // namespace
