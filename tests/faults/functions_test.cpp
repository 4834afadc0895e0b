// Every function of the utility library and every password hash, with every fault in turn: its result
// is the whole one, or the failure that its header promises, the arguments as they were.
#include "common/hash.h"
#include "liblst/liblst.h"
#include "tests/faults/sweep.h"
#include "tests/liblst/support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

namespace {

Fault fault;
int call_errno = 0;

/** Makes the call under the fault, and nothing else. */
template<class Call> auto armed(const Call& call)
{
    decltype(call()) result{};
    withFault(fault, [&] {
        errno = 0;
        result = call();
        call_errno = errno;
    });
    return result;
}
#define ARMED(call) armed([&] { return call; })

std::string joined(char** list)
{
    std::string all;
    for (const std::string& item : items(list)) {
        all += item + ' ';
    }
    return all;
}
std::string with(long result, const std::string& after)
{
    return std::to_string(result) + ' ' + after;
}

char** oldList()
{
    char** list = nullptr;
    mapPush(&list, "old", "value");
    return list;
}
const TempFile& file()
{
    static const TempFile the_file("key = value\nother = 1\n");
    lseek(the_file.fd, 0, SEEK_SET);
    return the_file;
}
std::string lockLeft()
{
    return unlink((std::string(file().path) + ".lock").c_str()) == 0 ? "left" : "";
}

/** Forgets what lines are pending. */
void drain()
{
    const TempFile ends("");
    for (char* row = nullptr; readFileRow(&row, ends.fd) > 0;) {
        std::free(row);
    }
}

struct Function {
    const char* name;
    std::string (*call)();
    const char* whole;
    const char* failed;
};
// Functions that return a list or a string; those that change one; and those with an out-argument.
#define LIST(call, whole)                                                                                              \
    {                                                                                                                  \
#call, [] {                                                                                                    \
            return joined(ARMED(call));                                                                                \
        }, whole, ""                                                                                                   \
    }
#define TEXT(call, whole)                                                                                              \
    {                                                                                                                  \
#call, [] {                                                                                                    \
            return text(ARMED(call));                                                                                  \
        }, whole, "(null)"                                                                                             \
    }
#define CHANGE(call, before, after, whole, failed)                                                                     \
    {                                                                                                                  \
#call, [] {                                                                                                    \
            auto it = before;                                                                                          \
            const auto result = ARMED(call);                                                                           \
            return with(result, after(it));                                                                            \
        }, whole, failed                                                                                               \
    }
#define OUT(call, whole)                                                                                               \
    {                                                                                                                  \
#call, [] {                                                                                                    \
            char* it = nullptr;                                                                                        \
            const auto result = ARMED(call);                                                                           \
            return with(result, text(it));                                                                             \
        }, whole, "-1 (null)"                                                                                          \
    }

const Function FUNCTIONS[] = {
    CHANGE(lstPush(&it, "new"), oldList(), joined, "2 old value new ", "-1 old value "),
    CHANGE(lstPush(&it, "new"), static_cast<char**>(nullptr), joined, "0 new ", "-1 "),
    CHANGE(mapPush(&it, "k", "v"), oldList(), joined, "3 old value k v ", "-1 old value "),
    CHANGE(replaceStrFormat(&it, "l", "%d", 1), strdup("old"), text, "0 o1d", "-1 old"),
    LIST(lstSplitStr(',', "1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6"), "1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 "),
    LIST(readConfig(file().path), "key value other 1 "),
    {"lstEgrep",
        [] {
            const char* list[] = {"a", "b", "ab", nullptr};
            return joined(ARMED(lstEgrep(list, "a")));
        },
        "a ab ", ""},
    {"getMapValues",
        [] {
            char** map = oldList();
            char** found = ARMED(getMapValues(map, "old"));
            return joined(map) + joined(found);
        },
        "old value value ", "old value "},
    {"lstReadDir", [] { return with(joined(ARMED(lstReadDir("/proc/self/task"))).empty(), ""); }, "0 ", "1 "},
    TEXT(ptReplaceStr("aaaaaaaaaaaaaaaaa", "a", "b"), "bbbbbbbbbbbbbbbbb"),
    TEXT(ptReplaceStr("a", "", "b"), "ab"),
    TEXT(ptCutStr("a<b>", "<", ">"), "b"),
    TEXT(ptCutStr("a", "<", ">"), ""),
    TEXT(String("%s", "text"), "text"),
    TEXT(Strdup("text"), "text"),
    TEXT(ptGetFileContent(file().fd), "key = value\nother = 1\n"),
    TEXT(SMB_enc_passwd("password"), "8846F7EAEE8FB117AD6BDD830B7586C"),
    {"SYS_enc_passwd", [] { return text(ARMED(SYS_enc_passwd("secret"))).substr(0, 3); }, "$1$", "(nu"},
    {"ptGetFileRowFormat",
        [] {
            char* row = ARMED(ptGetFileRowFormat("%s", file().path));
            drain();
            return text(row);
        },
        "key = value", "(null)"},
    OUT(getFileContentFormat(&it, "%s", file().path), "0 key = value\nother = 1\n"),
    OUT(getShellContentFormat(&it, "printf %%30d 1"), "0                              1"),
    {"readFileRow",
        [] {
            char* row = nullptr;
            const auto result = ARMED(readFileRow(&row, file().fd));
            drain();
            return with(result, text(row));
        },
        "12 key = value", "-1 (null)"},
    {"writeToFileFormat",
        [] {
            const TempFile to("");
            return with(ARMED(writeToFileFormat(to.fd, "text")), "");
        },
        "0 ", "-1 "},
    {"executeShellFormat", [] { return with(ARMED(executeShellFormat("exit %d", 0)), ""); }, "0 ", "-1 "},
    {"lockF",
        [] {
            const int fd = ARMED(lockF(file().path));
            const auto left = fd < 0 ? lockLeft() : "";
            ulockF(file().path, fd);
            return with(std::min(fd, 0), left);
        },
        "0 ", "-1 "},
    {"ulockF",
        [] {
            const int fd = lockF(file().path);
            ARMED((ulockF(file().path, fd), 0));
            return lockLeft();
        },
        "", "left"},
    {"pCollect",
        [] {
            void** all = nullptr;
            void* item = strdup("");
            const bool taken = ARMED((pCollect(&all, item), all != nullptr));
            pClean(all);
            std::free(taken ? nullptr : item);
            return with(taken, "");
        },
        "1 ", "0 "},
    {"those that make no call",
        [] {
            char string[] = " a b\n";
            char** map = oldList();
            unsigned char digest[16];
            MD4_CTX ctx;
            const bool whole =
                ARMED((MD4_Init(&ctx), MD4_Update(&ctx, "a", 1), MD4_Final(digest, &ctx), rndb_rand(), delGaps(string),
                    chopStr(string) + trimStr(string) == 0 && lstSize(map) == 2 &&
                        getMapValue(map, "old") == getConfigValue(map, "old", nullptr)));
            return with(whole, string + joined(map));
        },
        "1 abold value ", "never"},
};

TEST(Functions, EveryFaultInTurn)
{
    for (const auto& [name, call, whole, failed] : FUNCTIONS) {
        const auto work = [&, call = call, whole = whole, failed = failed] {
            fault = {};
            call(); // warms up
            everyFault([&](const Fault& next) {
                beginTrial(fault = next);
                const long before = liveResources() + openDescriptors();
                const std::string result = call();
                const bool struck = faultStruck();
                const bool failure = result == failed && struck && call_errno == next.error;
                if (result != whole && !failure) {
                    found("gives " + result + ", errno " + std::to_string(call_errno));
                }
                const std::size_t blocks = result.capacity() > 15 ? 1 : 0;
                if (liveResources() + openDescriptors() != before + static_cast<long>(blocks)) {
                    found("resources were left behind");
                }
                return struck;
            });
        };
        EXPECT_EQ(isolated(work), "") << name;
    }
}

} // namespace
