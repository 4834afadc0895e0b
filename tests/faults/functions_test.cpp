// Every function of the utility library and every password hash, with every fault in turn: its result
// is the whole one, or the failure that its header promises, the arguments as they were.
#include "common/hash.h"
#include "liblst/liblst.h"
#include "tests/faults/sweep.h"
#include "tests/liblst/support.h"

#include <fcntl.h>
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
std::string unlocked(int fd)
{
    const std::string left = fd < 0 ? lockLeft() : "";
    ulockF(file().path, fd);
    return with(std::min(fd, 0), left);
}

/** Forgets what lines are pending. */
void drain()
{
    static const int ends = open("/dev/null", O_RDONLY | O_CLOEXEC);
    for (char* row = nullptr; readFileRow(&row, ends) > 0;) {
        std::free(row);
    }
}

/** What makes no call that could fail. */
bool edits(char* string, char** map)
{
    unsigned char digest[16];
    MD4_CTX ctx;
    MD4_Init(&ctx);
    MD4_Update(&ctx, string, rndb_rand() != 0 ? 1 : 2);
    MD4_Final(digest, &ctx);
    delGaps(string);
    return chopStr(string) + trimStr(string) == 0 && lstSize(map) == 2 &&
           getMapValue(map, "old") == getConfigValue(map, "old", nullptr);
}

const char* LETTERS[] = {"a", "b", "ab", nullptr};

struct Function {
    const char* name;
    std::string (*call)();
    const char* whole;
    const char* failed;
};
#define CASE(before, call, shown, whole, failed)                                                                       \
    Function                                                                                                           \
    {                                                                                                                  \
#call, []() -> std::string {                                                                                   \
            before;                                                                                                    \
            [[maybe_unused]] const auto result = ARMED(call);                                                          \
            return shown;                                                                                              \
        }, whole, failed                                                                                               \
    }
#define LIST(call, whole) CASE(, call, joined(result), whole, "")
#define TEXT(call, whole) CASE(, call, text(result), whole, "(null)")
#define OUT(call, whole) CASE(char* it = nullptr, call, with(result, text(it)), whole, "-1 (null)")

const Function FUNCTIONS[] = {
    CASE(char** it = nullptr, lstPush(&it, "new"), with(result, joined(it)), "0 new ", "-1 "),
    CASE(char** it = oldList(), lstPush(&it, "new"), with(result, joined(it)), "2 old value new ", "-1 old value "),
    CASE(char** it = oldList(), mapPush(&it, "k", "v"), with(result, joined(it)), "3 old value k v ", "-1 old value "),
    CASE(char* it = strdup("old"), replaceStrFormat(&it, "l", "%d", 1), with(result, text(it)), "0 o1d", "-1 old"),
    CASE(char** it = oldList(), getMapValues(it, "old"), joined(it) + joined(result), "old value value ", "old value "),
    LIST(lstSplitStr(',', "1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6"), "1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 "),
    LIST(lstEgrep(LETTERS, "a"), "a ab "),
    LIST(readConfig(file().path), "key value other 1 "),
    CASE(, lstReadDir("/proc/self/task"), with(joined(result).empty(), ""), "0 ", "1 "),
    TEXT(ptReplaceStr("aaaaaaaaaaaaaaaaa", "a", "b"), "bbbbbbbbbbbbbbbbb"),
    TEXT(ptReplaceStr("a", "", "b"), "ab"),
    TEXT(ptCutStr("a<b>", "<", ">"), "b"),
    TEXT(ptCutStr("a", "<", ">"), ""),
    TEXT(String("%s", "text"), "text"),
    TEXT(Strdup("text"), "text"),
    TEXT(ptGetFileContent(file().fd), "key = value\nother = 1\n"),
    TEXT(ptGetFileRowFormat("%s", file().path), "key = value"),
    OUT(readFileRow(&it, file().fd), "12 key = value"),
    OUT(getFileContentFormat(&it, "%s", file().path), "0 key = value\nother = 1\n"),
    OUT(getShellContentFormat(&it, "printf %%30d 1"), "0                              1"),
    CASE(const TempFile to(""), writeToFileFormat(to.fd, "text"), with(result, ""), "0 ", "-1 "),
    CASE(, executeShellFormat("exit %d", 0), with(result, ""), "0 ", "-1 "),
    CASE(, lockF(file().path), unlocked(result), "0 ", "-1 "),
    CASE(const int fd = lockF(file().path), (ulockF(file().path, fd), 0), lockLeft(), "", "left"),
    CASE(void** all = nullptr; void* item = strdup(""), (pCollect(&all, item), all != nullptr),
         (pClean(all), std::free(result ? nullptr : item), with(result, "")), "1 ", "0 "),
    TEXT(SMB_enc_passwd("password"), "8846F7EAEE8FB117AD6BDD830B7586C"),
    CASE(, SYS_enc_passwd("secret"), text(result).substr(0, 3), "$1$", "(nu"),
    CASE(char string[] = " a b\n";
         char** map = oldList(), edits(string, map), with(result, string + joined(map)), "1 abold value ", "never"),
};

TEST(Functions, EveryFaultInTurn)
{
    for (const auto& [name, call, whole, failed] : FUNCTIONS) {
        const auto work = [&, call = call, whole = whole, failed = failed] {
            fault = {};
            call(); // warms up
            drain();
            everyFault([&](const Fault& next) {
                beginTrial(fault = next);
                const long before = liveResources() + openDescriptors();
                const std::string result = call();
                drain();
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
