// Reading what the daemon answers, and the small text helpers: no device needed.
#include "common/common.h"
#include "common/io.h"
#include "syscmd/daemon/user_records.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>

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

/** Seconds for a walk over so many records that lack a field, or a field's end. */
double walk(int count, const std::string& one)
{
    std::string reply = " ";
    for (int i = 0; i < count; ++i)
        reply += one;
    const auto start = std::chrono::steady_clock::now();
    UserRecords records = {.cursor = reply.c_str()};
    UserRecord record;
    int seen = 0;
    while (nextRecord(&records, &record))
        ++seen;
    EXPECT_EQ(seen, count);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(UserRecords, areReadInOnePass)
{
    for (const char* one : {"<User id=\"1\"><User_Id>1</User_Id>", "<User id=\"1\"><User_Id>1"}) {
        double best = 1e9;
        for (int attempt = 0; attempt < 5; ++attempt)
            best = std::min(best, walk(40000, one) / walk(10000, one));
        EXPECT_LT(best, 5) << "4 times the records: " << one;
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
    ASSERT_EQ(generateHashString(&text, 4), SUCCESS);
    const std::string digits = Owned(text).get();
    EXPECT_EQ(digits.size(), 4U);
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
