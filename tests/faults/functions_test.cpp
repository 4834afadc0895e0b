// Every function of the utility library, every password hash and the log, with every fault in turn: each call that
// it makes is said to be made again, to show when it fails, or to do no harm.
#include "common/hash.h"
#include "common/log.h"
#include "liblst/liblst.h"
#include "tests/faults/sweep.h"
#include "tests/liblst/support.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <set>

namespace {

constexpr int NO_ERROR = EXDEV; // what errno is before; no fault's error
Fault fault;
int call_errno = 0;

/** Makes the call under the fault, and nothing else. */
template<class Call> auto armed(const Call& call)
{
    decltype(call()) result{};
    withFault(fault, [&] {
        errno = NO_ERROR;
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
/** A file to lock; the device's, like the lock file that a fault leaves behind. */
const char* lockable()
{
    static const std::ofstream made("/run/lockable");
    return "/run/lockable";
}
std::string lockLeft()
{
    return unlink("/run/lockable.lock") == 0 ? "left" : "";
}
std::string unlocked(int fd)
{
    const std::string left = fd < 0 ? lockLeft() : "";
    ulockF(lockable(), fd);
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

/**
 * A call, what it shows without a fault and when it fails, and the kinds of calls it makes. Of each kind
 * the failure shows, errno with it, unless it is in brackets: then it does no harm. EINTR, EAGAIN and half
 * of the bytes are made good, but for EAGAIN of `kind!`. "(shrink)" is an allocation, the last, that does no harm.
 */
struct Function {
    const char* name;
    std::string (*call)();
    const char* whole;
    const char* failed;
    const char* calls;
    const char* unclosed = nullptr; // what it shows where closing fails, if that is another failure
};
#define CASE(before, call, shown, whole, failed, ...)                                                                  \
    Function                                                                                                           \
    {                                                                                                                  \
#call, []() -> std::string {                                                                                   \
            before;                                                                                                    \
            [[maybe_unused]] const auto result = ARMED(call);                                                          \
            return shown;                                                                                              \
        }, whole, failed, __VA_ARGS__                                                                                  \
    }
#define LIST(call, whole, calls) CASE(, call, joined(result), whole, "", calls)
#define TEXT(call, whole, calls) CASE(, call, text(result), whole, "(null)", calls)
#define OUT(call, whole, failed, ...)                                                                                  \
    CASE(char* it = strdup("before"); char* const old = it, call,                                                      \
         (std::free(it == old ? nullptr : old), with(result, text(it))), whole, failed, __VA_ARGS__)

const Function FUNCTIONS[] = {
    CASE(char** it = nullptr, lstPush(&it, "new"), with(result, joined(it)), "0 new ", "-1 ", "allocation"),
    CASE(char** it = oldList(), lstPush(&it, "new"), with(result, joined(it)), "2 old value new ", "-1 old value ",
        "allocation"),
    CASE(char** it = oldList(), mapPush(&it, "k", "v"), with(result, joined(it)), "3 old value k v ", "-1 old value ",
        "allocation"),
    CASE(char* it = strdup("old"), replaceStrFormat(&it, "l", "%d", 1), with(result, text(it)), "0 o1d", "-1 old",
        "allocation (shrink)"),
    CASE(char** it = oldList(), getMapValues(it, "old"), joined(it) + joined(result), "old value value ", "old value ",
        "allocation (shrink)"),
    LIST(
        lstSplitStr(',', "1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6"), "1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 ", "allocation (shrink)"),
    LIST(lstEgrep(LETTERS, "a"), "a ab ", "allocation regex (shrink)"),
    LIST(readConfig(file().path), "key value other 1 ", "allocation open (stat) read close (shrink)"),
    CASE(, lstReadDir("/proc/self/task"), with(joined(result).empty(), ""), "0 ", "1 ",
        "allocation opendir readdir (closedir) (shrink)"),
    TEXT(ptReplaceStr("aaaaaaaaaaaaaaaaa", "a", "b"), "bbbbbbbbbbbbbbbbb", "allocation (shrink)"),
    TEXT(ptReplaceStr("a", "", "b"), "ab", "allocation"),
    TEXT(ptCutStr("a<b>", "<", ">"), "b", "allocation"),
    TEXT(ptCutStr("a", "<", ">"), "", "allocation"),
    TEXT(String("%s", "text"), "text", "allocation"),
    TEXT(Strdup("text"), "text", "allocation"),
    TEXT(ptGetFileContent(file().fd), "key = value\nother = 1\n", "allocation (stat) read"),
    TEXT(ptGetFileRowFormat("%s", file().path), "key = value", "allocation open read! (close)"),
    OUT(readFileRow(&it, file().fd), "12 key = value", "-1 (null)", "allocation read!"),
    OUT(getFileContentFormat(&it, "%s", file().path), "0 key = value\nother = 1\n", "-1 before",
        "allocation open (stat) read close", "-1 (null)"),
    OUT(getShellContentFormat(&it, "printf %%30d 1"), "0                              1", "-1 before",
        "allocation popen (stat) read (pclose) (shrink)"),
    CASE(const TempFile to(""), writeToFileFormat(to.fd, "text"), with(result, ""), "0 ", "-1 ",
        "allocation write fsync"),
    CASE(, executeShellFormat("exit %d", 0), with(result, ""), "0 ", "-1 ", "allocation system"),
    CASE(, lockF(lockable()), unlocked(result), "0 ", "-1 ", "access allocation open lockf"),
    CASE(const int fd = lockF(lockable()), (ulockF(lockable(), fd), 0), lockLeft(), "", "left",
        "allocation (lockf) unlink (close)"),
    CASE(void** all = nullptr; void* item = strdup(""), (pCollect(&all, item), all != nullptr),
         (pClean(all), std::free(result ? nullptr : item), with(result, "")), "1 ", "0 ", "allocation"),
    TEXT(SMB_enc_passwd("password"), "8846F7EAEE8FB117AD6BDD830B7586C", "allocation"),
    CASE(, SYS_enc_passwd("secret"), text(result).substr(0, 3), "$1$", "(nu", "allocation crypt"),
    CASE(, (logStatement(LogLevel::Error, "u.cpp", 1, "f", "%3000s\n", ""), 0), with(result, ""), "0 ", "never",
        "(allocation) (access) (open) (localtime) (write) (close)"),
    CASE(char string[] = " a b\n";
         char** map = oldList(), edits(string, map), with(result, string + joined(map)), "1 abold value ", "never", ""),
};

enum class Outcome {
    Whole,   // the fault does no harm
    Retried, // and leaves no trace
    Failed,
    Unknown, // there should be no such call
};

bool isListed(const Function& function, const std::string& word)
{
    return (' ' + std::string(function.calls) + ' ').find(' ' + word + ' ') != std::string::npos;
}

Outcome expected(const Function& function, const Fault& of)
{
    const std::string kind = of.kind;
    const bool refusable = isListed(function, kind + '!');
    if (!faultStruck() || isListed(function, '(' + kind + ')')) {
        return Outcome::Whole;
    }
    if (!refusable && !isListed(function, kind)) {
        return Outcome::Unknown;
    }
    const bool retried = of.error == EINTR ? kind != "lockf" && kind != "close"
                                           : of.error == EAGAIN && !refusable && (kind == "read" || kind == "write");
    return retried ? Outcome::Retried : of.error == HALF ? Outcome::Whole : Outcome::Failed;
}

/** What came of a call is what was expected; a shrinking that failed is counted. */
bool isExpected(const Function& function, const Fault& of, const std::string& result, int& shrinkings)
{
    const Outcome outcome = expected(function, of);
    const bool whole = result == function.whole;
    if (outcome == Outcome::Failed && whole && std::string(of.kind) == "allocation") {
        ++shrinkings;
        return true;
    }
    const bool unclosed = std::string(of.kind) == "close" && function.unclosed != nullptr;
    const char* failed = unclosed ? function.unclosed : function.failed;
    return outcome == Outcome::Whole     ? whole
           : outcome == Outcome::Retried ? whole && call_errno == NO_ERROR
           : outcome == Outcome::Failed  ? result == failed && call_errno == of.error
                                         : false;
}

void sweepFunction(const Function& function)
{
    std::set<std::string> struck;
    int shrinkings = 0;
    fault = {};
    function.call(); // warms up
    drain();
    everyFault([&](const Fault& next) {
        beginTrial(fault = next);
        const long before = liveResources() + openDescriptors();
        const std::string result = function.call();
        drain();
        if (!isExpected(function, next, result, shrinkings)) {
            found("gives " + result + ", errno " + std::to_string(call_errno));
        }
        const std::size_t blocks = result.capacity() > 15 ? 1 : 0;
        if (liveResources() + openDescriptors() != before + static_cast<long>(blocks)) {
            found("resources were left behind");
        }
        if (faultStruck()) {
            struck.insert(next.kind);
        }
        return faultStruck();
    });
    if (shrinkings != (isListed(function, "(shrink)") ? 2 : 0)) { // once by itself, once and on
        found(std::to_string(shrinkings) + " failed allocations did no harm");
    }
    for (const Kind& kind : KINDS) {
        const std::string name = kind.name;
        const bool listed =
            isListed(function, name) || isListed(function, name + '!') || isListed(function, '(' + name + ')');
        if (listed != struck.contains(name)) {
            found(name + (listed ? " is never called" : " is called"));
        }
    }
}

TEST(Functions, EveryFaultInTurn)
{
    for (const Function& function : FUNCTIONS) {
        EXPECT_EQ(isolated([&] { sweepFunction(function); }), "") << function.name;
    }
}

} // namespace
