// Every function of the utility library and every password hash, with every fault in turn: its result
// is the whole one, or the failure that its header promises, the arguments as they were.
#include "common/hash.h"
#include "liblst/liblst.h"
#include "tests/faults/sweep.h"
#include "tests/liblst/support.h"

#include <fcntl.h>
#include <gtest/gtest.h>

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
std::string outcome(long result, const std::string& after)
{
    return std::to_string(result) + ' ' + after;
}

char** oldList()
{
    char** list = nullptr;
    lstPush(&list, "old");
    lstPush(&list, "value");
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
    const std::string path = std::string(file().path) + ".lock";
    return unlink(path.c_str()) == 0 ? "left" : "";
}

const struct {
    const char* name;
    std::string (*call)();
    const char* whole;
    const char* failed;
} FUNCTIONS[] = {
    {"lstPush",
        [] {
            char** list = oldList();
            const auto at = ARMED(lstPush(&list, "new"));
            return outcome(at, joined(list));
        },
        "2 old value new ", "-1 old value "},
    {"lstPush, the first",
        [] {
            char** list = nullptr;
            const auto at = ARMED(lstPush(&list, "new"));
            return outcome(at, joined(list));
        },
        "0 new ", "-1 "},
    {"lstSplitStr", [] { return joined(ARMED(lstSplitStr(',', "1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6"))); },
        "1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 ", ""},
    {"lstEgrep",
        [] {
            const char* list[] = {"a", "b", "ab", nullptr};
            return joined(ARMED(lstEgrep(list, "a")));
        },
        "a ab ", ""},
    {"lstReadDir", [] { return outcome(joined(ARMED(lstReadDir("/proc/self/task"))).empty(), ""); }, "0 ", "1 "},
    {"mapPush",
        [] {
            char** map = oldList();
            const auto at = ARMED(mapPush(&map, "k", "v"));
            return outcome(at, joined(map));
        },
        "3 old value k v ", "-1 old value "},
    {"getMapValues",
        [] {
            char** map = oldList();
            char** values = ARMED(getMapValues(map, "old"));
            return joined(map) + joined(values);
        },
        "old value value ", "old value "},
    {"ptReplaceStr", [] { return text(ARMED(ptReplaceStr("aaaaaaaaaaaaaaaaa", "a", "b"))); }, "bbbbbbbbbbbbbbbbb",
        "(null)"},
    {"ptReplaceStr, nothing", [] { return text(ARMED(ptReplaceStr("a", "", "b"))); }, "ab", "(null)"},
    {"replaceStrFormat",
        [] {
            char* string = strdup("old");
            const int result = ARMED(replaceStrFormat(&string, "l", "%d", 1));
            return outcome(result, text(string));
        },
        "0 o1d", "-1 old"},
    {"ptCutStr", [] { return text(ARMED(ptCutStr("a<b>", "<", ">"))); }, "b", "(null)"},
    {"ptCutStr, nothing", [] { return text(ARMED(ptCutStr("a", "<", ">"))); }, "", "(null)"},
    {"String", [] { return text(ARMED(String("%s", "text"))); }, "text", "(null)"},
    {"Strdup", [] { return text(ARMED(Strdup("text"))); }, "text", "(null)"},
    {"ptGetFileContent", [] { return text(ARMED(ptGetFileContent(file().fd))); }, "key = value\nother = 1\n", "(null)"},
    {"getFileContentFormat",
        [] {
            char* content = nullptr;
            const int result = ARMED(getFileContentFormat(&content, "%s", file().path));
            return outcome(result, text(content));
        },
        "0 key = value\nother = 1\n", "-1 (null)"},
    {"writeToFileFormat",
        [] {
            const TempFile target("");
            return outcome(ARMED(writeToFileFormat(target.fd, "%s", "text")), "");
        },
        "0 ", "-1 "},
    {"getShellContentFormat",
        [] {
            char* content = nullptr;
            const int result = ARMED(getShellContentFormat(&content, "printf %%3000d 1"));
            return outcome(result, std::to_string(text(content).size()));
        },
        "0 3000", "-1 6"},
    {"executeShellFormat", [] { return outcome(ARMED(executeShellFormat("exit %d", 0)), ""); }, "0 ", "-1 "},
    {"readFileRow",
        [] {
            char* row = nullptr;
            const TempFile ends("");
            const auto result = ARMED(readFileRow(&row, file().fd));
            for (char* rest = nullptr; readFileRow(&rest, ends.fd) > 0;) {
                std::free(rest);
            }
            return outcome(result, text(row));
        },
        "12 key = value", "-1 (null)"},
    {"ptGetFileRowFormat",
        [] {
            const TempFile ends("");
            char* row = ARMED(ptGetFileRowFormat("%s", file().path));
            for (char* rest = nullptr; readFileRow(&rest, ends.fd) > 0;) {
                std::free(rest);
            }
            return text(row);
        },
        "key = value", "(null)"},
    {"readConfig", [] { return joined(ARMED(readConfig(file().path))); }, "key value other 1 ", ""},
    {"lockF",
        [] {
            const int fd = ARMED(lockF(file().path));
            const std::string left = fd < 0 ? lockLeft() : "";
            ulockF(file().path, fd);
            return outcome(fd < 0 ? fd : 0, left);
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
            void** collection = nullptr;
            void* pointer = strdup("");
            const bool collected = ARMED((pCollect(&collection, pointer), collection != nullptr));
            pClean(collection);
            std::free(collected ? nullptr : pointer);
            return outcome(collected, "");
        },
        "1 ", "0 "},
    {"SYS_enc_passwd",
        [] {
            drand48_buf = {};
            return text(ARMED(SYS_enc_passwd("secret"))).substr(0, 3);
        },
        "$1$", "(nu"},
    {"SMB_enc_passwd", [] { return text(ARMED(SMB_enc_passwd("password"))); }, "8846F7EAEE8FB117AD6BDD830B7586C",
        "(null)"},
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
            return outcome(whole, string + joined(map));
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
