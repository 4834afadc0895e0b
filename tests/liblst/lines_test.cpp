#include "tests/liblst/support.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <cerrno>

namespace {

/** Begins and ends without pending text. */
class Lines : public testing::Test {
  protected:
    Lines() { failToRead(); }
    ~Lines() override { failToRead(); }

    /** Releases the pending text, by a read that fails after its whole lines. */
    static void failToRead()
    {
        char* row = nullptr;
        ssize_t size = 0;
        while ((size = readFileRow(&row, -1)) > 0) {
            std::free(row);
        }
        EXPECT_EQ(size, -1);
        EXPECT_EQ(errno, EBADF);
    }

    /** The first rows of a file, up to `most`. */
    static Items rowsOf(const std::string& content, std::size_t most = 10000)
    {
        const TempFile file(content);
        Items rows;
        char* row = nullptr;
        while (rows.size() < most) {
            const ssize_t size = readFileRow(&row, file.fd);
            EXPECT_EQ(size, row != nullptr ? static_cast<ssize_t>(std::string(row).size()) + 1 : 0);
            if (size <= 0) {
                break;
            }
            rows.push_back(text(row));
        }
        return rows;
    }
};

TEST_F(Lines, OfAChunk)
{
    const struct {
        const char* content;
        Items rows;
    } cases[] = {
        {"", {}}, {"o\rne\r\ntwo\n", {"one", "two"}}, {"same\nsame\nthird\n", {"same", "third"}},
        {"b\nab\nc\n", {"b", "ac"}},                // the tail of a longer line goes too
        {"\none\n\ntwo\n\nsix", {"", "onetwosix"}}, // and so do the line ends after an empty one
    };
    for (const auto& row : cases) {
        EXPECT_EQ(rowsOf(row.content, 2), row.rows) << row.content;
        failToRead();
    }
}

TEST_F(Lines, AcrossChunks)
{
    for (const std::size_t size : {510U, 511U, 512U, 513U, 5000U}) {
        const std::string line(size, 'x');
        EXPECT_EQ(rowsOf(line + "\nnext\n"), (Items{line, "next"})) << size;
    }
    const std::string filler(600, 'f'); // equal lines are dropped in the pending text only
    EXPECT_EQ(rowsOf("same\n" + filler + "\nsame\n"), (Items{"same", filler, "same"}));
    Items many;
    std::string content;
    for (int i = 0; i < 5000; ++i) {
        many.push_back("line " + std::to_string(i) + ";");
        content += many.back() + '\n';
    }
    EXPECT_EQ(rowsOf(content), many);
}

// Each read of such a socket takes one message and loses what it has no room for.
TEST_F(Lines, ComeInChunksThatAreStrings)
{
    using std::string_literals::operator""s;
    const std::string chunk(512, 'x');
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends), 0);
    for (const std::string& message : {chunk + "lost\n", "a\0lost\n"s, "b\nnext\n"s, "\0lost\n"s, "pending"s}) {
        ASSERT_EQ(write(ends[1], message.data(), message.size()), static_cast<ssize_t>(message.size()));
    }
    Items rows;
    for (char* row = nullptr; readFileRow(&row, ends[0]) > 0;) {
        rows.push_back(text(row));
        row = nullptr;
        errno = 0;
    }
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(rows, (Items{chunk + "ab", "next"}));
    close(ends[1]);
    char* row = nullptr;
    EXPECT_EQ(readFileRow(&row, ends[0]), 0) << "what was pending is not released";
    close(ends[0]);
}

TEST_F(Lines, ALastLineWithoutLineEndStaysPending)
{
    EXPECT_EQ(rowsOf("one\nlast", 4), (Items{"one", "last", "last", "last"}));
    EXPECT_EQ(rowsOf(" and\nmore\n"), (Items{"last and", "more"}));
}

TEST_F(Lines, WhatOneFileLeavesComesFirstInTheNext)
{
    const TempFile file("first\nleft over\n");
    const TempFile config("a=1\nb=2");
    EXPECT_EQ(text(ptGetFileRowFormat("%s", file.path)), "first");
    EXPECT_EQ(items(readConfig(config.path)), (Items{"a", "1", "b", "2"})); // keeps out of it
    EXPECT_EQ(rowsOf("other\n"), (Items{"left over", "other"}));
    EXPECT_EQ(ptGetFileRowFormat("/nonexistent"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Config, Lines)
{
    const struct {
        const char* content;
        Items map;
    } cases[] = {
        {"  key  = a b = c\n", {"key", "ab=c"}},
        {"a=1\r\n\r\n\tb = 2\na=1", {"a", "1", "b", "2", "a", "1"}},
        {"no sign\n=value\nkey=\nkey= \n # key = 1\n#=\n", {}},
        {"k#==#v\n", {"k#", "=#v"}},
        {"", {}},
    };
    for (const auto& row : cases) {
        const TempFile file(row.content);
        EXPECT_EQ(items(readConfig(file.path)), row.map) << row.content;
    }
    EXPECT_EQ(readConfig("/nonexistent"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

} // namespace
