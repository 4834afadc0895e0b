#include "tests/liblst/support.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace {

void expectInvalid(const char* call, bool refused)
{
    EXPECT_TRUE(refused && errno == EINVAL) << call;
    errno = 0;
}
#define INVALID(call) expectInvalid(#call, (errno = 0, call))

TEST(Arguments, EachNullIsRefused)
{
    char** list = nullptr;
    char* string = nullptr;
    char full[] = "a";
    char* const kept = full;
    char* edited = full;
    void** collection = nullptr;
    const char* strings[] = {nullptr};
    char* map[] = {full, full, nullptr};
    const TempFile file("");
    INVALID(lstPush(nullptr, "a") == -1);
    INVALID(lstPush(&list, nullptr) == -1);
    INVALID(lstSplitStr(',', nullptr) == nullptr);
    INVALID(lstEgrep(nullptr, "a") == nullptr);
    INVALID(lstEgrep(strings, nullptr) == nullptr);
    INVALID(lstReadDir(nullptr) == nullptr);
    INVALID(mapPush(nullptr, "k", "v") == -1);
    INVALID(mapPush(&list, nullptr, "v") == -1);
    INVALID(mapPush(&list, "k", nullptr) == -1);
    INVALID(getMapValue(nullptr, "a") == nullptr);
    INVALID(getMapValue(map, nullptr) == nullptr);
    INVALID(getMapValues(nullptr, "a") == nullptr);
    INVALID(getMapValues(map, nullptr) == nullptr);
    INVALID(ptReplaceStr(nullptr, "a", "b") == nullptr);
    INVALID(ptReplaceStr("a", nullptr, "b") == nullptr);
    INVALID(ptReplaceStr("a", "a", nullptr) == nullptr);
    INVALID(replaceStrFormat(nullptr, "a", "b") == -1);
    INVALID(replaceStrFormat(&string, "a", "b") == -1);
    INVALID(replaceStrFormat(&edited, nullptr, "b") == -1);
    INVALID(replaceStrFormat(&edited, "a", nullptr) == -1);
    INVALID(chopStr(nullptr) == -1);
    INVALID(trimStr(nullptr) == -1);
    INVALID((delGaps(nullptr), true));
    INVALID(ptCutStr(nullptr, "a", "b") == nullptr);
    INVALID(ptCutStr("a", nullptr, "b") == nullptr);
    INVALID(ptCutStr("a", "a", nullptr) == nullptr);
    INVALID(String(nullptr) == nullptr);
    INVALID(getFileContentFormat(nullptr, "/") == -1);
    INVALID(getFileContentFormat(&string, nullptr) == -1);
    INVALID(writeToFileFormat(file.fd, nullptr) == -1);
    INVALID(getShellContentFormat(nullptr, "true") == -1);
    INVALID(getShellContentFormat(&string, nullptr) == -1);
    INVALID(executeShellFormat(nullptr) == -1);
    INVALID(readFileRow(nullptr, file.fd) == -1);
    INVALID(ptGetFileRowFormat(nullptr) == nullptr);
    INVALID(readConfig(nullptr) == nullptr);
    INVALID(lockF(nullptr) == -1);
    INVALID((ulockF(nullptr, file.fd), fcntl(file.fd, F_GETFD) != -1));
    INVALID((pCollect(nullptr, &string), true));
    INVALID((pCollect(&collection, nullptr), true));
    EXPECT_TRUE(list == nullptr && string == nullptr && edited == kept && collection == nullptr);

    lstFree(nullptr);
    pClean(nullptr);
    EXPECT_EQ(Strdup(nullptr), nullptr);
    EXPECT_EQ(lstSize(nullptr), 0U);
    EXPECT_STREQ(getConfigValue(nullptr, "a", "default"), "default");
    EXPECT_STREQ(getConfigValue(map, nullptr, "default"), "default");
    EXPECT_EQ(getConfigValue(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(errno, 0);
}

} // namespace
