#include "tests/liblst/support.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

void expectInvalid(const char* call, bool refused)
{
    EXPECT_TRUE(refused && errno == EINVAL) << call;
    errno = 0;
}
#define INVALID(call) expectInvalid(#call, (errno = 0, call))

TEST(Arguments, NullIsRefused)
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

} // namespace
