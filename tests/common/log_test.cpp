// The log facility itself, with statements of no table.
#include "tests/syscmd/on_device.h"

#include <cerrno>

namespace {

class Log : public OnDevice {
    void TearDown() override {}
};

struct Logged {
    int max_level;
    LogLevel level;
    std::string text;
    Texts journal; // without the prefix of the first
};

TEST_F(Log, statementsGoWhereTheirLevelAndLinesSay)
{
    const std::string large(70000, 'x');
    const Logged table[] = {
        {3, LogLevel::Error, "one\n", {"one"}},
        {2, LogLevel::Error, "one\n", {}},
        {5, LogLevel::Info, "one\n", {}},
        {6, LogLevel::Info, "one\n", {"one"}},
        {6, LogLevel::Debug, "one\n", {}},
        {7, LogLevel::Debug, "one\ntwo\n", {"one", "two"}},
        {7, LogLevel::Debug, "one\rtwo\r\nthree", {"one", "two"}},
        {7, LogLevel::Debug, "one\r\r\n\ntwo\n", {"one", "two"}},
        {7, LogLevel::Error, "no line end", {}},
        {7, LogLevel::Error, "\n", {""}},
        {7, LogLevel::Error, large + "\n", {large}},
        {7, LogLevel::Error, large.substr(0, 2046) + "\n", {large.substr(0, 2046)}},
        {7, LogLevel::Error, large.substr(0, 2047) + "\n", {large.substr(0, 2047)}},
    };
    for (const auto& [max_level, level, text, journal] : table) {
        shell(": > /var/log/shbroker.log");
        MAX_LOG_LEVEL = max_level;
        errno = EXDEV;
        logStatement(level, "unit.cpp", 42, "someFunction", "%s", text.c_str());
        EXPECT_EQ(errno, EXDEV);

        const auto file = fileStatements();
        ASSERT_EQ(file.size(), 1U);
        EXPECT_EQ(file[0].text, text);
        EXPECT_EQ(file[0].unit + std::to_string(file[0].line), "unit.cpp42");
        const std::vector<Statement> entries = journalStatements();
        ASSERT_EQ(entries.size(), journal.size()) << text.substr(0, 80);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const std::string prefix = i == 0 ? file[0].level + ":unit.cpp:42: " : "";
            EXPECT_EQ(entries[i].text, journal[i].empty() ? prefix.substr(0, prefix.size() - 1) : prefix + journal[i]);
            EXPECT_EQ(entries[i].function, "someFunction");
        }
    }
}

TEST_F(Log, aLogFileThatCannotBeOpenedIsPassedOver)
{
    shell("rm /var/log/shbroker.log");
    for (const char* instead : {"true", "mkdir"}) { // nothing, and what is no file
        shell(std::string(instead) + " /var/log/shbroker.log");
        for (MAX_LOG_LEVEL = 2; MAX_LOG_LEVEL < 4; ++MAX_LOG_LEVEL) {
            errno = EXDEV;
            LOG(Error, "to the journal only\n");
            EXPECT_EQ(errno, EXDEV) << instead << MAX_LOG_LEVEL;
            EXPECT_EQ(journalStatements().size(), MAX_LOG_LEVEL == 3 ? 1U : 0U);
        }
    }
}

} // namespace
