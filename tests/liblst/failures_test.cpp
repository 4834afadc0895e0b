#include "liblst/export.h"
#include "tests/liblst/support.h"

#include <gtest/gtest.h>
#include <sys/types.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <functional>

// Calls of the units that fail on order, by the linker's --wrap.
static thread_local int allocations_left = INT_MAX; // before the one that fails
static const char* failing_call = nullptr;

static bool fails(const char* call, int error)
{
    const bool now =
        error == ENOMEM ? allocations_left-- == 0 : failing_call != nullptr && std::strcmp(failing_call, call) == 0;
    errno = now ? error : errno;
    return now;
}

#define WRAP(type, name, parameters, arguments, failure, error)                                                        \
    extern "C" type __real_##name parameters;                                                                          \
    extern "C" EXPORTED type __wrap_##name parameters;                                                                 \
    type __wrap_##name parameters                                                                                      \
    {                                                                                                                  \
        return fails(#name, error) ? failure : __real_##name arguments;                                                \
    }
WRAP(void*, malloc, (size_t size), (size), nullptr, ENOMEM)
WRAP(void*, realloc, (void* old, size_t size), (old, size), nullptr, ENOMEM)
WRAP(char*, strdup, (const char* string), (string), nullptr, ENOMEM)
WRAP(char*, strndup, (const char* string, size_t size), (string, size), nullptr, ENOMEM)
WRAP(int, close, (int fd), (fd), -1, EIO)
WRAP(int, lockf64, (int fd, int command, off_t length), (fd, command, length), -1, ENOLCK)

namespace {

void expectInvalid(const char* call, bool refused)
{
    EXPECT_TRUE(refused && errno == EINVAL) << call;
    errno = 0;
}
#define INVALID(call) expectInvalid(#call, (errno = 0, call))

TEST(Failures, NullArguments)
{
    char** list = nullptr;
    char* string = nullptr;
    void** collection = nullptr;
    const char* format = nullptr;
    INVALID(lstPush(nullptr, "a") == -1);
    INVALID(lstPush(&list, nullptr) == -1);
    INVALID(lstSplitStr(',', nullptr) == nullptr);
    INVALID(lstEgrep(nullptr, "a") == nullptr);
    INVALID(lstEgrep(&format, nullptr) == nullptr);
    INVALID(lstReadDir(nullptr) == nullptr);
    INVALID(mapPush(&list, nullptr, "v") == -1);
    INVALID(mapPush(&list, "k", nullptr) == -1);
    INVALID(getMapValue(nullptr, "k") == nullptr);
    INVALID(getMapValues(&string, nullptr) == nullptr);
    INVALID(ptReplaceStr("a", nullptr, "b") == nullptr);
    INVALID(ptReplaceStr("a", "a", nullptr) == nullptr);
    INVALID(replaceStrFormat(&string, "a", "b") == -1);
    INVALID(chopStr(nullptr) == -1);
    INVALID(trimStr(nullptr) == -1);
    INVALID((delGaps(nullptr), true));
    INVALID(ptCutStr(nullptr, "a", "b") == nullptr);
    INVALID(ptCutStr("a", "a", nullptr) == nullptr);
    INVALID(String(nullptr) == nullptr);
    INVALID(getFileContentFormat(nullptr, "/") == -1);
    INVALID(getFileContentFormat(&string, nullptr) == -1);
    INVALID(writeToFileFormat(1, nullptr) == -1);
    INVALID(getShellContentFormat(nullptr, "true") == -1);
    INVALID(executeShellFormat(nullptr) == -1);
    INVALID(readFileRow(nullptr, 0) == -1);
    INVALID(ptGetFileRowFormat(nullptr) == nullptr);
    INVALID(readConfig(nullptr) == nullptr);
    INVALID(lockF(nullptr) == -1);
    INVALID((ulockF(nullptr, -1), true));
    INVALID((pCollect(nullptr, &string), true));
    INVALID((pCollect(&collection, nullptr), collection == nullptr));
    lstFree(nullptr);
    pClean(nullptr);
    EXPECT_EQ(Strdup(nullptr), nullptr);
    EXPECT_EQ(lstSize(list), 0U);
    EXPECT_EQ(errno, 0);
}

/** Fails each allocation of `call` in turn: then its result is `whole`, or `none` with ENOMEM. */
template<typename Result> void sweep(const std::function<Result()>& call, const Result& whole, const Result& none)
{
    for (int nth = 0, left = -1; left < 0; ++nth) {
        errno = 0;
        allocations_left = nth;
        const Result result = call();
        left = allocations_left;
        allocations_left = INT_MAX;
        EXPECT_TRUE(result == whole || (left < 0 && result == none && errno == ENOMEM)) << nth;
        EXPECT_TRUE(nth > 0 || result == none) << "needed no memory";
    }
}
#define SWEEP_TEXT(call, whole) sweep<std::string>([&] { return text(call); }, whole, "(null)")
#define SWEEP_LIST(call, whole) sweep<Items>([&] { return items(call); }, whole, {})

TEST(Failures, ExhaustedMemoryGivesNothing)
{
    const TempFile file("key = value\nother = 1\n");
    const char* list[] = {"k", "v", "k", "w", nullptr};
    char* content = nullptr;
    SWEEP_LIST(lstSplitStr(',', "1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6"),
        (Items{"1", "2", "3", "4", "5", "6", "7", "8", "9", "0", "1", "2", "3", "4", "5", "6"}));
    SWEEP_LIST(lstEgrep(list, "[vw]"), (Items{"v", "w"}));
    SWEEP_LIST(getMapValues(const_cast<char**>(list), "k"), (Items{"v", "w"}));
    SWEEP_LIST(lstReadDir("/proc/self/task"), Items{std::to_string(getpid())});
    SWEEP_LIST(readConfig(file.path), (Items{"key", "value", "other", "1"}));
    SWEEP_TEXT(ptReplaceStr("aaaaaaaaaaaaaaaaa", "a", "b"), "bbbbbbbbbbbbbbbbb");
    SWEEP_TEXT(ptReplaceStr("a", "", "b"), "ab");
    SWEEP_TEXT(ptCutStr("a<b>", "<", ">"), "b");
    SWEEP_TEXT(ptGetFileRowFormat("%s", file.path), "key = value");
    SWEEP_TEXT(
        (getShellContentFormat(&content, "printf %%5000d 1") == 0 ? content : nullptr), std::string(4999, ' ') + "1");
}

TEST(Failures, ExhaustedMemoryLeavesTheListAsItWas)
{
    // By calls that never fail here.
    const auto make = [](bool empty) {
        char** list = empty ? nullptr : static_cast<char**>(reallocarray(nullptr, 2, sizeof(char*)));
        if (list != nullptr && asprintf(list, "old") > 0) {
            list[1] = nullptr;
        }
        return list;
    };
    for (const bool empty : {true, false}) {
        const Items old = items(make(empty));
        Items pushed = old;
        char** list = nullptr;
        pushed.emplace_back("key");
        sweep<Items>([&] { return list = make(empty), lstPush(&list, "key"), items(list); }, pushed, old);
        pushed.emplace_back("value");
        sweep<Items>([&] { return list = make(empty), mapPush(&list, "key", "value"), items(list); }, pushed, old);
    }
    char** list = nullptr;
    sweep<Items>(
        [&] { return list = make(false), replaceStrFormat(list, "l", "%d", 1), items(list); }, {"o1d"}, {"old"});
}

TEST(Failures, OfClosingAndLocking)
{
    const TempFile file("content");
    char nothing = 0;
    char* content = &nothing;
    failing_call = "close";
    EXPECT_EQ(getFileContentFormat(&content, "%s", file.path), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(content, nullptr);
    failing_call = "lockf64";
    EXPECT_EQ(lockF(file.path), -1);
    EXPECT_EQ(errno, ENOLCK);
    EXPECT_EQ(access(text(String("%s.lock", file.path)).c_str(), F_OK), -1);
    failing_call = nullptr;
}

} // namespace
