// "initlocalsession": records, the sweep, and pinning by the real immutable attribute, where the
// kernel lets us; elsewhere its refusal.
#include "tests/syscmd/operation_case.h"

#include <cerrno>

namespace {

const std::string SESSIONS = "/opt/skyhold/etc/local_sessions/";
const std::string IN_SESSIONS = "cd " + SESSIONS + " && ";

Trace recording(const std::string& user, const Trace& statements)
{
    return {said("InitLocalSessionHandler: the user of the session", user), statements, "code 0",
        said("InitLocalSessionHandler: success", user), "response success"};
}

Case recorded(const char* name, const std::string& user, const std::string& token, const std::string& expires,
    const std::string& prepare, const Trace& statements, const std::string& check)
{
    return {
        .name = name,
        .params = {"initlocalsession", user, token, expires},
        .prepare = prepare,
        .trace = recording(user.substr(0, 31), statements),
        .check = check,
    };
}

/** Shell that makes a record of `user`, so many seconds old. */
std::string record(const std::string& token, const std::string& user, int age, bool pinned = false)
{
    const std::string path = SESSIONS + token;
    return "mkdir -p " + SESSIONS + " && printf '" + user + "' > " + path + " && touch -d @" +
           std::to_string(NOW - age) + " " + path + (pinned ? " && chattr +i " + path + "; " : "; ");
}

Said removing(const std::string& token, time_t written)
{
    return said("CleanupObsoleteLocalSessions: REMOVE", token, std::to_string(written), std::to_string(NOW));
}

const Said PINNING = said("UpdateLocalSessionRecords: set immutable flag", SESSIONS + "t");
const std::string EMPTY = "test -d " + SESSIONS + " && test -z \"$(ls -A " + SESSIONS + ")\"";
const std::string PATH_OF_255(255 - SESSIONS.size(), 't');
constexpr int DAY = 86400;

INSTANTIATE_TEST_SUITE_P(InitLocalSession, Operation,
    testing::Values(recorded("makesDirectoryAndRecord", NAME_40, "t", "1", "", {},
                        "test \"$(stat -c %a " + SESSIONS + ")\" = 5 && " + IN_SESSIONS +
                            "test \"$(stat -c %a t)\" = 4 && test \"$(cat t)\" = " + NAME_31),
        recorded("rewritesARecord", "bob", "t", "", record("t", "carol", DAY - 60), {},
            IN_SESSIONS + "test \"$(cat t)\" = bob && test $(($(date +%s) - $(stat -c %Y t))) -lt 60"),
        recorded("emptyToken", "bob", "", "1", "", {}, EMPTY),
        recorded("tokenIntoNowhere", "bob", "a/b", "1", "", {}, EMPTY),
        recorded("longestPath", "bob", PATH_OF_255, "1", "", {}, "test -f " + SESSIONS + PATH_OF_255),
        recorded("pathTooLong", "bob", PATH_OF_255 + "t", "1", "", {}, EMPTY),
        recorded("directoryIsAFile", "bob", "t", "1", "rm -rf " + SESSIONS + "; : > /opt/skyhold/etc/local_sessions",
            {}, "test -f /opt/skyhold/etc/local_sessions; rm /opt/skyhold/etc/local_sessions"),
        // Two of them are dated beyond what 32 bits hold.
        recorded("sweepsOldRecords", "bob", "t", "1",
            record("a", "carol", DAY + 10) + record("b", "bob", DAY - 60) + record("c", "", DAY + 10) +
                "touch -d @-2208988800 " + SESSIONS + "c; touch -d 2100-01-01 " + SESSIONS +
                "b; : > /dev/shm/a; : > /dev/shm/b; mkdir " + SESSIONS +
                "d; echo bob > /var/lib/device/old; touch -d @0 /var/lib/device/old; ln -s "
                "/var/lib/device/old " +
                SESSIONS + "l; touch -h -d @0 " + SESSIONS + "d " + SESSIONS + "l",
            {removing("a", NOW - DAY - 10), removing("c", -2208988800)},
            "test \"$(ls " + SESSIONS + " | xargs)\" = 'b d l t' && ! test -e /dev/shm/a && rm /dev/shm/b"),
        Case{
            .name = "directoryCannotBeMade",
            .params = {"initlocalsession", "bob", "t", "1"},
            .credentials = "bob:secret",
            .prepare = "rm -r /opt/skyhold/etc",
            .access = {access("bob", 0, 1)},
            .trace = recording(
                "bob", {said("UpdateLocalSessionRecords: mkdir", "/opt/skyhold/etc/local_sessions", ENOENT)}),
            .requests = {"[bob]"},
            .check = "mkdir /opt/skyhold/etc",
        },
        lacking("needsAllParameters", {"initlocalsession", "bob", "t"})),
    caseName);

/** Whether this device lets us set the attribute, for which the kernel asks a privilege. */
bool canPin()
{
    const std::string probe = "/opt/skyhold/etc/.pin";
    return shell(": > " + probe + "; chattr +i " + probe + " 2>/dev/null && echo yes; chattr -i " + probe +
                 " 2>/dev/null; rm -f " + probe) == "yes\n";
}

std::vector<Case> pinning()
{
    const Said unread = said("CleanupObsoleteLocalSessions: Unable to read", "e");
    if (!canPin()) {
        return {recorded("refusedByTheKernel", "bob", "t", "0", record("e", "", 0),
            {unread, PINNING,
                said("UpdateLocalSessionRecords: ioctl failed", SESSIONS + "t", "Operation not permitted")},
            "test \"$(stat -c %a " + SESSIONS + "t)\" = 4")};
    }
    const auto reset = [](const std::string& token) {
        return said("CleanupObsoleteLocalSessions: reset immutable flag", token);
    };
    const std::string pinned = IN_SESSIONS + "lsattr ";
    return {
        recorded("pins", "bob", "t", "0", record("e", "", 0), {unread, PINNING},
            pinned + "t | cut -d ' ' -f 1 | grep i && " + IN_SESSIONS +
                "test \"$(stat -c %a t)\" = 666 && test \"$(cat t)\" = bob"),
        recorded("unpinsTheUsersOwn", "bob", "t", "0",
            record("a", "bob", 60) + "chattr +iA " + SESSIONS + "a; " + record("b", "bob\\r\\nx", DAY + 1, true) +
                record("c", "carol", DAY + 1, true) + record("d", "bobby", 60, true) + record("e", "Bob", 60, true),
            {reset("a"), reset("b"), removing("b", NOW - DAY - 1), removing("c", NOW - DAY - 1), PINNING},
            IN_SESSIONS + "test \"$(ls | xargs)\" = 'a c d e t' && lsattr a | cut -d ' ' -f 1 | grep -v '[iA]' && "
                          "test \"$(lsattr c d e | cut -d ' ' -f 1 | grep -c i)\" = 3"),
        recorded("bytesBehindANulPinNothing", "bob", "t", std::string("0\0x", 3), record("a", "bob", 60, true), {},
            pinned + "a | cut -d ' ' -f 1 | grep i && lsattr t | cut -d ' ' -f 1 | grep -v i"),
        recorded("onlyZeroPins", "bob", "t", "00", record("a", "bob", 60, true), {},
            pinned + "a | cut -d ' ' -f 1 | grep i && lsattr t | cut -d ' ' -f 1 | grep -v i"),
        recorded("anothersPinnedToken", "bob", "t", "0", record("t", "carol", 60, true), {},
            "test \"$(cat " + SESSIONS + "t)\" = carol"),
    };
}

INSTANTIATE_TEST_SUITE_P(Pinning, Operation, testing::ValuesIn(pinning()), caseName);

} // namespace
