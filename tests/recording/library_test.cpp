// The recording library: in front of a client library that does as it is told, with every call of its own failing
// in turn, and with files that cannot be written.
#include "common/mxl/bwdclient.h"
#include "devkit/bwdrecord/bwdrecord.h"
#include "devkit/recording/recording.h"
#include "tools/failing_calls/faults.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

namespace {

/** What the client library behind the recorder gives. */
struct Told {
    const char* name;
    int result;
    int error;         // errno behind the call
    const char* reply; // null: none
    bool garbage;      // what it leaves of a reply is none
};
const Told TOLD[] = {
    {"a reply", 0, EXDEV, "<a>\xC3 \xC3\xA9\t\"</a>", false},
    {"an empty reply", 0, 0, "", false},
    {"no reply", 0, 0, nullptr, false},
    {"a failure", -1, ETIMEDOUT, nullptr, true},
};
const Told* told = nullptr;
std::string received;

int tell(char* request, int length, char** reply, int* reply_length)
{
    const Aside aside;
    received.assign(request, static_cast<std::size_t>(length));
    *reply = told->garbage ? reinterpret_cast<char*>(1) : told->reply == nullptr ? nullptr : strdup(told->reply);
    *reply_length = told->reply == nullptr ? 0 : static_cast<int>(strlen(told->reply));
    errno = told->error;
    return told->result;
}

int most_descriptors = 0; // the recording's among them
bool cannot_seek = false;
bool cannot_truncate = false;

/** What a call through the recorder shows its caller. */
std::string outcome(const Told& row, std::string request, const Fault& fault = {})
{
    told = &row;
    received.clear();
    char* reply = nullptr;
    int length = -1;
    int result = 0;
    int error = 0;
    const long resources = liveResources();
    withFault(fault, [&] {
        result = process_request_bwdclient(request.data(), static_cast<int>(request.size()), &reply, &length);
        error = errno;
    });
    EXPECT_EQ(liveResources(), resources);
    EXPECT_LE(openDescriptors(), most_descriptors);
    const Aside aside;
    std::string shown = std::to_string(result) + ' ' + std::to_string(error) + ' ' + std::to_string(length) + ' ';
    if (reply == reinterpret_cast<char*>(1))
        shown += "garbage";
    else
        shown += reply == nullptr ? "null" : reply;
    if (!row.garbage)
        free(reply);
    EXPECT_EQ(received, request);
    return shown;
}

std::string expected(const Told& row)
{
    return std::to_string(row.result) + ' ' + std::to_string(row.error) + ' ' +
           std::to_string(row.reply == nullptr ? 0 : strlen(row.reply)) + ' ' +
           (row.garbage               ? "garbage"
               : row.reply == nullptr ? "null"
                                      : row.reply);
}

/** In a process of its own, whose end by a signal shows. */
int status_of(void (*work)(const std::string&), const std::string& path)
{
    const pid_t child = fork();
    if (child == 0) {
        work(path);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

class Library : public testing::Test {
  protected:
    Library()
    {
        char name[] = "/tmp/bwdrecord_test.XXXXXX";
        folder_ = mkdtemp(name);
        most_descriptors = openDescriptors() + 1;
    }
    ~Library() override
    {
        record_to(nullptr, nullptr); // nothing stays open
        std::filesystem::remove_all(folder_);
    }

    std::string path(const std::string& name) const { return folder_ + '/' + name; }
    std::string content(const std::string& name) const
    {
        std::ifstream file(path(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /** The calls that the file tells. */
    std::vector<RecordedCall> calls(const std::string& name) const
    {
        std::vector<RecordedCall> all;
        for (const RecordedCommand& command : parse_recording(content(name), name).commands)
            all.insert(all.end(), command.calls.begin(), command.calls.end());
        return all;
    }

  private:
    std::string folder_;
};

} // namespace

extern "C" void* __wrap_dlsym(void* handle, const char* name);
void* __wrap_dlsym(void*, const char* name)
{
    EXPECT_STREQ(name, "process_request_bwdclient");
    return reinterpret_cast<void*>(tell);
}
extern "C" off_t __real_lseek64(int fd, off_t offset, int from);
extern "C" off_t __wrap_lseek64(int fd, off_t offset, int from);
off_t __wrap_lseek64(int fd, off_t offset, int from)
{
    return cannot_seek ? -1 : __real_lseek64(fd, offset, from);
}
extern "C" int __real_ftruncate64(int fd, off_t length);
extern "C" int __wrap_ftruncate64(int fd, off_t length);
int __wrap_ftruncate64(int fd, off_t length)
{
    return cannot_truncate ? -1 : __real_ftruncate64(fd, length);
}

TEST_F(Library, ACallIsRecordedAsItWas)
{
    record_to(path("file").c_str(), nullptr);
    for (const Told& row : TOLD)
        EXPECT_EQ(outcome(row, "a\xFF\n\x01 request"), expected(row)) << row.name;
    const auto recorded = calls("file");
    ASSERT_EQ(recorded.size(), std::size(TOLD));
    for (std::size_t i = 0; i < std::size(TOLD); ++i) {
        const Told& row = TOLD[i];
        SCOPED_TRACE(row.name);
        EXPECT_EQ(recorded[i].number, recorded[0].number + i);
        EXPECT_EQ(recorded[i].result, row.result);
        EXPECT_EQ(recorded[i].error, row.result == 0 ? 0 : row.error);
        EXPECT_EQ(recorded[i].request, "a\xFF\n\x01 request");
        EXPECT_EQ(recorded[i].request_length, 12U);
        EXPECT_EQ(recorded[i].reply, row.reply == nullptr ? std::nullopt : std::optional<std::string>(row.reply));
        EXPECT_EQ(recorded[i].reply_length, row.reply == nullptr ? 0 : strlen(row.reply));
        EXPECT_GE(recorded[i].microseconds, 0);
    }
    EXPECT_EQ(outcome(TOLD[2], std::string((1 << 20) + 1, 'x')), expected(TOLD[2]));
    EXPECT_EQ(calls("file").back().request, std::nullopt) << "too long";
    EXPECT_EQ(calls("file").back().request_length, (1U << 20) + 1);
    struct stat status = {};
    EXPECT_EQ(stat(path("file").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(Library, EveryFailingCallInTurnIsNobodysAffair)
{
    record_to(path("file").c_str(), nullptr);
    std::set<std::string> struck_kinds;
    const auto trial = [&](const Told& row, const Fault& fault, bool removed) {
        SCOPED_TRACE(row.name + (' ' + nameOf(fault)) + (removed ? ", the file was removed" : ""));
        std::filesystem::remove(path("file"));
        outcome(TOLD[2], "before");
        if (removed)
            std::filesystem::remove(path("file"));
        const std::size_t before = removed ? 0 : 1;
        EXPECT_EQ(outcome(row, std::string(5000, 'r'), fault), expected(row));
        const bool struck = faultStruck();
        const bool nothing = content("file").empty();
        const std::size_t after = nothing ? 0 : calls("file").size();
        EXPECT_TRUE(after == before || after == before + 1);
        EXPECT_TRUE(struck || after == before + 1) << "nothing failed";
        if (struck)
            struck_kinds.insert(fault.kind);
        return struck;
    };
    for (const Told& row : TOLD) {
        for (const Kind& kind : KINDS) {
            for (const int error : kind.errors) {
                for (const bool removed : {false, true}) {
                    for (int nth = 1; trial(row, {kind.name, error, nth, false, 0}, removed); ++nth) {
                    }
                }
            }
        }
    }
    EXPECT_EQ(struck_kinds, (std::set<std::string>{"allocation", "open", "stat", "write", "close"}));
}

/** A disk that takes half a line, which cannot be taken back: a reader is told, and the next call is recorded. */
TEST_F(Library, AHalfLineThatStaysIsTold)
{
    for (bool* const cannot : {&cannot_seek, &cannot_truncate}) {
        record_to(path("file").c_str(), nullptr);
        outcome(TOLD[2], "first");
        *cannot = true;
        EXPECT_EQ(outcome(TOLD[0], "second", {"write", HALF, 1, false, 0}), expected(TOLD[0]));
        EXPECT_TRUE(faultStruck());
        *cannot = false;
        EXPECT_THROW(parse_recording(content("file"), "file"), BadRecording);
        std::filesystem::remove(path("file"));
    }
}

TEST_F(Library, AFileThatCannotBeWrittenIsPassedOver)
{
    mkfifo(path("pipe").c_str(), 0600);
    std::filesystem::create_directory(path("folder"));
    const std::string paths[] = {
        "/dev/full", "/nowhere/file", path("folder"), path("pipe"), path("file/below"), std::string(5000, 'x'), ""};
    outcome(TOLD[2], "");
    std::ofstream(path("file")) << "";
    const int reader = open(path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ++most_descriptors;
    for (const std::string& name : paths) {
        record_to(name.c_str(), "key");
        for (const Told& row : TOLD)
            EXPECT_EQ(outcome(row, "request"), expected(row)) << name;
    }
    EXPECT_EQ(content("file"), "");
    char byte = 0;
    EXPECT_EQ(read(reader, &byte, 1), 0) << "a pipe is no file";
    close(reader);
}

/** What takes the number of a descriptor that somebody has closed is not written to. */
TEST_F(Library, ADescriptorThatIsAnothersIsLeftAlone)
{
    record_to(path("file").c_str(), nullptr);
    outcome(TOLD[2], "first");
    for (int fd = 3; fd < 64; ++fd)
        if (std::filesystem::exists("/proc/self/fd/" + std::to_string(fd)) &&
            std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd)) == path("file")) {
            std::ofstream(path("other")) << "another's\n";
            const int other = open(path("other").c_str(), O_RDWR | O_CLOEXEC);
            dup2(other, fd);
            close(other);
            ++most_descriptors;
        }
    outcome(TOLD[2], "second");
    EXPECT_EQ(content("other"), "another's\n");
    EXPECT_EQ(calls("file").size(), 2U);
    std::filesystem::remove(path("file"));
    outcome(TOLD[2], "third");
    EXPECT_EQ(calls("file").size(), 1U) << "made anew, with a header";
}

TEST_F(Library, LimitsAndClosedStreamsAreNobodysAffair)
{
    const auto limited = [](const std::string& file) {
        record_to(file.c_str(), nullptr);
        outcome(TOLD[2], "fits");
        for (const rlim_t size : {rlim_t{1500}, rlim_t{100}}) { // lines are cut by the one, none fits beyond the other
            const rlimit limit = {size, 1500};
            setrlimit(RLIMIT_FSIZE, &limit);
            for (int i = 0; i < 20; ++i)
                EXPECT_EQ(outcome(TOLD[0], std::string(100, 'x')), expected(TOLD[0]));
        }
    };
    EXPECT_EQ(status_of(limited, path("limited")), 0);
    EXPECT_GE(calls("limited").size(), 2U) << "whole lines, as many as fit";
    const auto closed = [](const std::string& file) {
        record_to(file.c_str(), nullptr);
        for (int fd = 0; fd < 3; ++fd)
            close(fd);
        EXPECT_EQ(outcome(TOLD[0], "request"), expected(TOLD[0]));
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_NOFILE, &none);
        EXPECT_EQ(outcome(TOLD[0], "request"), expected(TOLD[0]));
    };
    EXPECT_EQ(status_of(closed, path("closed")), 0);
    EXPECT_EQ(calls("closed").size(), 2U) << "the file is open already";
}

TEST_F(Library, ProcessesShareAFileWithoutMixingLines)
{
    constexpr int PROCESSES = 4;
    constexpr std::size_t CALLS = 80;
    record_to(path("file").c_str(), nullptr);
    std::vector<pid_t> children;
    for (int i = 0; i < PROCESSES; ++i) {
        children.push_back(fork());
        if (children.back() == 0) {
            for (std::size_t call = 0; call < CALLS; ++call)
                outcome(TOLD[call % std::size(TOLD)], std::string(call * 100, static_cast<char>('a' + i)));
            _exit(0);
        }
    }
    for (const pid_t child : children)
        waitpid(child, nullptr, 0);
    std::map<std::int64_t, std::set<std::uint64_t>> numbers;
    for (const RecordedCommand& command : parse_recording(content("file"), "file").commands)
        for (const RecordedCall& call : command.calls)
            numbers[command.pid].insert(call.number);
    EXPECT_EQ(numbers.size(), children.size());
    for (const auto& [pid, all] : numbers)
        EXPECT_EQ(all.size(), CALLS) << pid;
}
