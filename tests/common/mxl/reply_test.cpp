// Reading what the daemon answers, and the small text helpers: no device needed.
#include "common/common.h"
#include "common/io.h"
#include "syscmd/daemon/user_records.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

namespace {

std::size_t searched = 0; // bytes that strstr has looked through

} // namespace

// In strstr's place, for everything that is linked to this program.
extern "C" {
char* __real_strstr(const char* text, const char* part);
char* __wrap_strstr(const char* text, const char* part);

char* __wrap_strstr(const char* text, const char* part)
{
    char* const found = __real_strstr(text, part);
    searched += found != nullptr ? static_cast<std::size_t>(found - text) : strlen(text);
    return found;
}
}

namespace {

struct Free {
    void operator()(char* text) const { free(text); }
};
using Owned = std::unique_ptr<char, Free>;

std::string cutOut(const char* text, const char* begin, const char* end)
{
    char* result = nullptr;
    EXPECT_EQ(CutStr(&result, text, begin, end), SUCCESS);
    return Owned(result).get();
}

TEST(CutStr, table)
{
    EXPECT_EQ(cutOut("a<x>b</x>c", "<x>", "</x>"), "b");
    EXPECT_EQ(cutOut("a<x>b", "<x>", "</x>"), "b") << "to the end";
    EXPECT_EQ(cutOut("abc", "<x>", "</x>"), "");
    EXPECT_EQ(cutOut("</x><x>b</x>", "<x>", "</x>"), "b") << "the end is behind the begin";
    EXPECT_EQ(cutOut("<x>1</x><x>2</x>", "<x>", "</x>"), "1");
    EXPECT_EQ(cutOut("aXXXb", "XX", "XX"), "Xb") << "the markers do not overlap";
    EXPECT_EQ(cutOut("", "<x>", "</x>"), "");
    char* result = nullptr;
    EXPECT_EQ(CutStr(&result, nullptr, "a", "b"), -1);
    EXPECT_EQ(CutStr(nullptr, "a", "a", "b"), -1);
    EXPECT_EQ(result, nullptr);
}

TEST(GetMXLStatus, table)
{
    const std::pair<const char*, const char*> replies[] = {
        {"<xs:response status=\"success\"><x/>", "success"},
        {"<xs:response id=\"1\" status=\"success\">", "success"},
        {"<xs:response status=\"success\" id=\"1\">", "success\" id=\"1"},
        {"<xs:response status=\"success\"/>", "success\"/>"},
        {"<xs:response status=\"failure\"> <a status=\"success\">", "failure"},
        {"<xs:response><a status=\"success\">", ""},
        {"status=\"success\">", ""},
        {"", ""},
    };
    for (const auto& [reply, expected] : replies) {
        char* status = nullptr;
        ASSERT_EQ(GetMXLStatus(&status, reply), SUCCESS);
        EXPECT_STREQ(Owned(status).get(), expected) << reply;
    }
}

TEST(GetMXLErrorDetail, endsWithItsElement)
{
    char* detail = nullptr;
    ASSERT_EQ(GetMXLErrorDetail(&detail, "<xs:error-details><![CDATA[a]]>b]]></xs:error-details>"), SUCCESS);
    EXPECT_STREQ(Owned(detail).get(), "a]]>b");
}

TEST(UserRecords, aMissingFieldComesFromALaterRecord)
{
    UserRecords records = {.cursor = "<User id=\"0\"> <User id=\"1\"><User_Id>1</User_Id>"
                                     "<User id=\"2\"><User_Id>2</User_Id><Group_Name><![CDATA[g]]></Group_Name>"
                                     "<User_Name><![CDATA[n]]></User_Name><Email_Address><![CDATA[e"};
    UserRecord record;
    // A record at the very first byte is passed over.
    ASSERT_TRUE(nextRecord(&records, &record));
    EXPECT_EQ(record.id, "1");
    EXPECT_EQ(record.group, "g");
    EXPECT_EQ(record.name, "n");
    EXPECT_EQ(record.email, "e") << "to the end";
    ASSERT_TRUE(nextRecord(&records, &record));
    EXPECT_EQ(record.id, "2");
    EXPECT_FALSE(nextRecord(&records, &record));
}

TEST(UserRecords, areReadInOnePass)
{
    constexpr int COUNT = 1000;
    constexpr std::size_t MARKERS = 9; // each of which the reply is searched for once
    for (const char* one : {"<User id=\"1\"><User_Id>1</User_Id>", "<User id=\"1\"><User_Id>1"}) {
        std::string reply = " ";
        for (int i = 0; i < COUNT; ++i)
            reply += one;
        searched = 0;
        UserRecords records = {.cursor = reply.c_str()};
        UserRecord record;
        int seen = 0;
        while (nextRecord(&records, &record))
            ++seen;
        EXPECT_EQ(seen, COUNT);
        EXPECT_GE(searched, reply.size() - 1) << "the counting search is not the one that is used";
        EXPECT_LE(searched, MARKERS * reply.size()) << one;
    }
}

TEST(Base64, table)
{
    const std::pair<const char*, const char*> texts[] = {
        {"", ""},
        {"YQ==", "a"},
        {"YWI6Yw==", "ab:c"},
        {"Y W\nJj", "abc"},
        {"Y", ""},
        {"!!!", ""},
        {"YWJjZA", "abc"},
    };
    for (const auto& [encoded, expected] : texts)
        EXPECT_STREQ(Owned(ptDecodeBase64(encoded)).get(), expected) << encoded;
    EXPECT_EQ(ptDecodeBase64(nullptr), nullptr);
}

TEST(RandomName, isHexadecimalOfTheLengthAskedFor)
{
    char* text = nullptr;
    ASSERT_EQ(generateHashString(&text, 1000), SUCCESS);
    const std::string digits = Owned(text).get();
    EXPECT_EQ(digits.size(), 1000U);
    EXPECT_EQ(std::set(digits.begin(), digits.end()).size(), 16U);
    EXPECT_EQ(digits.find_first_not_of("0123456789abcdef"), std::string::npos) << digits;
    EXPECT_EQ(generateHashString(nullptr, 4), -1);
}

TEST(Readline, endsAtTheFirstLineEnd)
{
    char text[] = "one\r\ntwo";
    const std::unique_ptr<FILE, int (*)(FILE*)> stream(fmemopen(text, sizeof text - 1, "r"), fclose);
    char line[8];
    ASSERT_EQ(readline(line, sizeof line, stream.get()), SUCCESS);
    EXPECT_STREQ(line, "one");
    ASSERT_EQ(readline(line, 3, stream.get()), SUCCESS);
    EXPECT_STREQ(line, "tw");
    ASSERT_EQ(readline(line, sizeof line, stream.get()), SUCCESS);
    EXPECT_EQ(readline(line, sizeof line, stream.get()), -1);
}

} // namespace
