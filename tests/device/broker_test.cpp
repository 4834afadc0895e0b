#include "devkit/broker/command.h"
#include "devkit/broker/failing/asked_faults.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

using Words = std::vector<std::string>;

struct Outcome {
    int status = -1;
    std::string output; // both streams
};

/** Runs the broker with arguments for the shell; `input` is what it reads. */
Outcome broker(const std::string& arguments, const std::string& input = "")
{
    const std::string command = "printf %s '" + input + "' | " BROKER " " + arguments + " 2>&1";
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    Outcome outcome;
    std::array<char, 4096> chunk{};
    while (const std::size_t got = fread(chunk.data(), 1, chunk.size(), pipe.get()))
        outcome.output.append(chunk.data(), got);
    outcome.status = WEXITSTATUS(pclose(pipe.release()));
    return outcome;
}

TEST(Command, Accepted)
{
    const struct {
        Words words;
        Words expected;
        std::optional<std::string> credentials;
        int log_level;
    } CASES[] = {
        {{"adduser"}, {"adduser"}, {}, 3},
        {{"a", "", "b", ""}, {"a", "", "b", ""}, {}, 3},
        {{"a", "[x,y]", "{}", "x=", "-"}, {"a", "[x,y]", "{}", "x=", "-"}, {}, 3},
        {{"a", "--as", "bob", "b"}, {"a", "b"}, "bob:", 3},
        {{"--as=bob:p:q", "a", "--log-level", "7"}, {"a"}, "bob:p:q", 7},
        {{"a", "--as", ""}, {"a"}, ":", 3},
        {{"a", "--", "--as", "-x", "--"}, {"a", "--as", "-x", "--"}, {}, 3},
    };
    for (const auto& c : CASES) {
        const Command command = parse_run(c.words).command;
        EXPECT_EQ(command.words, c.expected);
        EXPECT_EQ(command.credentials, c.credentials);
        EXPECT_EQ(command.log_level, c.log_level);
    }
}

TEST(Command, Rejected)
{
    for (const Words& words : std::vector<Words>{
             {},
             {"--"},
             {"a", "-x"},
             {"a", "--as"},
             {"a", "--as", "b", "--as", "c"},
             {"a", "--log-level", "8"},
             {"a", "--log-level", "-1"},
             {"a", "--log-level", "x"},
         })
        EXPECT_THROW(parse_run(words), BadUse) << testing::PrintToString(words);
}

TEST(Script, WordsAreSplitAsAShellDoes)
{
    const auto script = parse_script("# first\n\n a 'b c' \"\" d\\ e # rest\n  --as x f --log-level 0", "s");
    ASSERT_EQ(script.size(), 2U);
    EXPECT_EQ(script[0].command.words, (Words{"a", "b c", "", "d e"}));
    EXPECT_EQ(script[1].command.words, Words{"f"});
    EXPECT_EQ(script[1].command.credentials, "x:");
    EXPECT_EQ(script[1].command.log_level, 0);
}

TEST(Fault, AsAskedFor)
{
    const struct {
        const char* text;
        std::string kind;
        int nth;
        int error;
    } CASES[] = {
        {"open:1", "open", 1, EMFILE},
        {"open:12:EIO", "open", 12, EIO},
        {"creat:2147483647:5", "open", 2147483647, EIO},
        {"new:3", "allocation", 3, ENOMEM},
        {"read:1:HALF", "read", 1, HALF},
        {"getgrgid_r:1:NOBODY", "look-up", 1, NOBODY},
        {"regcomp:2", "regex", 2, 12},
    };
    for (const auto& c : CASES) {
        const Fault fault = parse_fault(c.text);
        EXPECT_EQ(fault.kind, c.kind) << c.text;
        EXPECT_EQ(fault.nth, c.nth) << c.text;
        EXPECT_EQ(fault.error, c.error) << c.text;
        EXPECT_FALSE(fault.onward) << c.text;
    }
    for (const char* text : {"", "open", "open:", "open:0", "open:-1", "open:2147483648", "open:1x", ":1", "client:1",
             "open:1:", "open:1:0", "open:1:EFOO", "open:1:HALF", "read:1:NOBODY", "regex:1:EIO", "open:1:EIO:2"})
        EXPECT_THROW(parse_fault(text), BadUse) << text;
}

constexpr const char* NO_DEVICE = "broker: this is no device: devkit/device/device starts one, ./dev demo shows one"
                                  " at work; elsewhere --plugin must be given\n";

TEST(Broker, TellsForWhichMachineALibraryIs)
{
    const struct {
        const char* start; // of an ELF file, up to its machine
        const char* complaint;
    } CASES[] = {
        {"\x7f"
         "ELF\1\1\1...........\x28.",
            "is for 32-bit ARM, and this broker for "},
        {"\x7f"
         "ELF\2\1\1...........\xf3.",
            "is for machine 243, and this broker for "},
        {"\x7f"
         "EL",
            "is no shared library\n"},
        {"#!/bin/sh, longer than a head", "is no shared library\n"},
    };
    for (const auto& c : CASES) {
        const int file = memfd_create("library", 0);
        std::string head = c.start;
        std::replace(head.begin(), head.end(), '.', '\0');
        head.resize(20);
        ASSERT_EQ(write(file, head.data(), head.size()), 20);
        const std::string path = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(file);
        const Outcome outcome = broker("run answer --plugin " + path);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.output.find("broker: " + path + ' ' + c.complaint), std::string::npos) << outcome.output;
        close(file);
    }
}

TEST(Broker, ExitStatusAndOutput)
{
    const std::string told = " --plugin " TOLD_PLUGIN;
    const struct {
        std::string arguments;
        std::string input;
        int status;
        std::string output; // a part of it
    } CASES[] = {
        {"run answer 0 done" + told, "", 0, "CODE_SUCCEED, \"done\", "},
        {"run answer 6" + told, "", 0, "CODE_NOREPLY, no response, "},
        {"run answer 1 no" + told, "", 1, "CODE_FAILED, \"no\", "},
        {"run answer" + told, "", 1, "CODE_UNDEFINED, no response, "},
        {"run answer 77 x" + told, "", 1, "code 77, \"x\", "},
        {"run answer 0 --as bob:secret" + told, "", 0, "\"Ym9iOnNlY3JldA==\""},
        {"script -" + told, "answer 0 a\nanswer 6 b", 0, "> answer 6 b\nCODE_NOREPLY, \"b\""},
        {"script -" + told, "answer 1 a\nanswer 0 b", 1, "> answer 0 b\nCODE_SUCCEED"},
        {"script -" + told, "answer 0 a\nanswer -x", 2, "broker: standard input:2: "},
        {"script -" + told, "answer 0 a\nanswer \"x", 2, "broker: standard input:2: "},
        {"script -" + told, "answer 0 a\n--as x", 2, "broker: standard input:2: "},
        {"script -" + told, "answer 0 --json", 2, "broker: standard input:1: "},
        {"script /no/file" + told, "", 2, "broker: cannot read /no/file: No such file or directory\n"},
        {"script /" + told, "", 2, "broker: cannot read /: Is a directory\n"},
        {"script - </" + told, "", 2, "broker: cannot read standard input: Is a directory\n"},
        {"run answer --plugin /no/plugin.so", "", 2, "broker: /no/plugin.so: "},
        {"run answer --plugin /etc/passwd", "", 2, "broker: /etc/passwd is no shared library\n"},
        {"hash x" + told, "", 2, "told_plugin.so exports no SMB_enc_passwd\n"},
        {"hash ''", "", 2, "broker: the plug-in makes no hash of this password\n"},
        {"hash a b", "", 2, "broker: expected one password"},
        {"run answer 0", "", 2, NO_DEVICE},
        {"script -", "answer 0", 2, NO_DEVICE},
        {"run answer 0 --fail open:1", "", 2,
            "broker: this is no device: devkit/device/device starts one; --fail works"},
        {"run answer 0 --fail open:1" + told, "", 2, "broker: --fail has a plug-in of its own, and goes without"},
        {"run answer 0 --fail frobnicate:1", "", 2, "unknown call frobnicate: there are allocation (malloc, calloc, "},
        {"script - --fail open:1" + told, "", 2, "broker: expected one file and nothing else"},
        {"script -" + told, "answer 0 --fail open:1", 2, "broker: standard input:1: --fail is for broker run"},
        {"run --help", "", 0, "usage: broker run OPERATION"},
        {"script x -h", "", 0, "usage: broker run OPERATION"},
        {"run answer 0" + told + " -- --help", "", 0, "CODE_SUCCEED, \"--help\""},
        {"", "", 2, "broker: which command?"},
        {"rum", "", 2, "broker: unknown command rum"},
    };
    for (const auto& c : CASES) {
        const Outcome outcome = broker(c.arguments, c.input);
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        EXPECT_NE(outcome.output.find(c.output), std::string::npos) << c.arguments << "\n" << outcome.output;
        if (c.status == 2) {
            EXPECT_EQ(outcome.output.find('\n'), outcome.output.size() - 1) << "one line";
        }
    }
}

TEST(Broker, Json)
{
    const Outcome outcome = broker("script - --json --plugin " TOLD_PLUGIN, "answer 0 x --as bob:p\nanswer 1");
    auto answers = nlohmann::json::parse(outcome.output);
    for (auto& answer : answers) {
        EXPECT_GE(answer.at("milliseconds").get<double>(), 0);
        answer.erase("milliseconds");
    }
    EXPECT_EQ(answers, nlohmann::json::parse(R"([
        {"operation": "answer", "parameters": ["0", "x"], "as": "bob", "code": "CODE_SUCCEED",
         "response": "x\nYm9iOnA="},
        {"operation": "answer", "parameters": ["1"], "as": null, "code": "CODE_FAILED",
         "response": null}])"));
}

/** By the plug-in that ships: a pair of hashes that no other tool of this project makes. */
TEST(Broker, HashPair)
{
    const Outcome outcome = broker("hash secret | base64 -d");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output.substr(0, 36), "878D8014606CDA29677A44EFA1353FC7:$1$");
}

} // namespace
