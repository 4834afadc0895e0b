#include "tests/syscmd/operation_case.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>

namespace {

/** The functions whose statements are known by their lines. */
std::string functionOf(int line)
{
    const std::map<int, const char*> first_after = {
        {274, ""},
        {334, "AddNetwork"},
        {435, ""},
        {534, "AddUser"},
        {975, ""},
        {999, "UpgradeUserToSSO"},
        {1190, ""},
        {1234, "Unregister"},
        {1251, ""},
        {1283, "AuthenticateUser"},
        {1326, "AddAccountHandler"},
        {1359, "AddRemoteUserHandler"},
        {1383, "UnregisterHandler"},
        {1426, "DeleteAccountHandler"},
        {1478, "UpgradeUserToSSOHandler"},
        {1644, ""},
        {1652, "execute"},
    };
    const auto found = first_after.upper_bound(line);
    return found == first_after.end() ? "" : found->second;
}

/** Statements that only show texts passing by. */
bool isChatter(const Statement& statement)
{
    const auto begins = [&](const char* start) {
        return statement.text.rfind(start, 0) == 0;
    };
    return statement.level == "DEBUG" &&
           (begins("syscmd:GetID") || begins("syscmd:request") || begins("syscmd:respond") ||
               begins("syscmd: DelNetwork failed") || begins("DEBUG:") || begins("INFO [syscmd:execute]"));
}

/** The file's statements and effects as a case writes them. */
Texts traceLike(const Texts& expected)
{
    Texts lines;
    for (const Statement& statement : fileStatements()) {
        if (isChatter(statement))
            continue;
        std::string text = statement.text.substr(0, statement.text.find('\n'));
        text.insert(0, statement.level == "=" ? "= " : std::to_string(statement.line) + " ");
        const std::size_t at = lines.size();
        if (at < expected.size()) {
            const std::string& like = expected[at];
            if (like[0] == '*')
                text.replace(0, text.find(' '), "*");
            if (like.back() == '~' && text.rfind(like.substr(0, like.size() - 1), 0) == 0)
                text = like;
        }
        lines.push_back(text);
    }
    return lines;
}

/** Each line of each statement in the file is an entry of the journal, the prefix before the first.
 */
void expectJournalLikeFile()
{
    static const std::map<std::string, const char*> PRIORITIES = {{"ERROR", "3"}, {"INFO", "6"}, {"DEBUG", "7"}};
    std::vector<Statement> journal = journalStatements();
    auto entry = journal.begin();
    for (const Statement& said : fileStatements()) {
        if (said.level == "=")
            continue;
        std::string text = said.level + ":" + said.file + ":" + std::to_string(said.line) + ": " + said.text;
        for (std::size_t end = 0; (end = text.find_first_of("\r\n")) != std::string::npos;) {
            std::string piece = text.substr(0, end);
            text.erase(0, end + 1);
            if (piece.empty())
                continue;
            piece.erase(piece.find_last_not_of(' ') + 1); // libsystemd does so
            ASSERT_NE(entry, journal.end()) << piece;
            EXPECT_EQ(entry->text, piece);
            EXPECT_EQ(entry->line, said.line);
            EXPECT_EQ(entry->file, said.file);
            EXPECT_EQ(entry->level, PRIORITIES.at(said.level));
            if (!functionOf(said.line).empty()) {
                EXPECT_EQ(entry->function, functionOf(said.line));
            }
            ++entry;
        }
    }
    EXPECT_EQ(entry, journal.end());
}

std::ptrdiff_t openDescriptors()
{
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open));
}

} // namespace

std::string order(const std::string& what, int skip)
{
    return "boxwelld order " + what + " --skip " + std::to_string(skip);
}

Texts joined(std::initializer_list<Texts> lists)
{
    Texts all;
    for (const Texts& list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

// The first entry of a process opens its socket to the journal, for good.
void Operation::SetUpTestSuite()
{
    RecordingTransaction none;
    resetDevice();
    command(none);
}

TEST_P(Operation, answersTracesAndTransacts)
{
    const Case& asked = GetParam();
    resetDevice();
    if (!asked.prepare.empty())
        shell(asked.prepare);
    RecordingTransaction transaction;
    transaction.params = asked.params;
    if (!asked.credentials.empty())
        transaction.credentials = base64(asked.credentials);

    const auto descriptors = openDescriptors();
    command(transaction);

    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(transaction.code, asked.code);
    EXPECT_EQ(transaction.responses, Texts{asked.response});
    EXPECT_EQ(traceLike(asked.trace), asked.trace);
    expectJournalLikeFile();
    const Texts sent = requests();
    EXPECT_EQ(sent.size(), asked.requests.size());
    for (std::size_t i = 0; i < std::min(sent.size(), asked.requests.size()); ++i)
        EXPECT_NE(sent[i].find(asked.requests[i]), std::string::npos) << "request " << i << "\n"
                                                                      << sent[i] << "\nhas no " << asked.requests[i];
    if (!asked.check.empty())
        shell(asked.check);
}
