// The daemon's commands: seeds, what they show, the transcript, bad use.
#include "tests/boxwelld/daemon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <sstream>

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;

TEST(Seed, IsRefusedInOneLineAndLosesNothing)
{
    const Daemon daemon;
    call(find_user("bob"));
    daemon.run("order reply x --skip 1");
    const Json before = daemon.state();
    const std::string passwd = daemon.read("passwd");
    const char* const seeds[] = {
        "",
        R"({"accounts": [)",
        "[]",
        R"({"acounts": []})",
        R"({"accounts": {}})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": "a", "group": "h"}]})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": "a/b", "group": "g"}]})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": 3, "group": "g"}]})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": "a", "group": "g", "id": 0}]})",
        R"({"groups": [{"name": "g", "id": 7}, {"name": "h", "id": 7}]})",
        R"({"groups": [{"name": "root"}]})",
        R"({"groups": [{"name": "g"}], "accounts": [{"name": "a", "group": "g", "ids": 9}]})",
    };
    for (const char* text : seeds) {
        SCOPED_TRACE(text);
        daemon.write("bad", text);
        const Outcome run = daemon.run("seed " + daemon.path("bad"));
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.output, MatchesRegex("boxwelld: [^\n]+\n"));
        EXPECT_EQ(daemon.read("passwd"), passwd);
    }
    EXPECT_EQ(daemon.state(), before);
    EXPECT_EQ(Json::parse(daemon.run("transcript --json").output).size(), 1);
    call(find_user("bob"));
    EXPECT_EQ(call(find_user("bob")).reply, "x") << "the order still stands";
}

TEST(Seed, TakesWhatShowPrintsAndBeginsAnew)
{
    const Daemon daemon;
    const Json before = daemon.state();
    const std::string passwd = daemon.read("passwd");
    call(delete_user("1002"));
    call(add_user("zoe"));
    daemon.run("order fail");
    daemon.write("state.json", before.dump());
    EXPECT_EQ(daemon.run("seed - < " + daemon.path("state.json")).status, 0);
    EXPECT_EQ(daemon.state(), before);
    EXPECT_EQ(daemon.read("passwd"), passwd);
    EXPECT_EQ(daemon.run("transcript --json").output, "[]\n");
    EXPECT_EQ(call(add_user("zoe")).result, 0) << "orders are cleared";
}

/** A request that is carried out, one that is late and one without a reply, behind one of before there were times. */
TEST(Transcript, TellsWhenARequestCameAndHowLongTheReplyTook)
{
    Daemon daemon;
    daemon.stop(SIGTERM);
    daemon.write("state/transcript.jsonl", R"({"request": "old", "reply": null, "order": "fail"})"
                                           "\n{\"request\": \"cut of");
    EXPECT_EQ(Json::parse(daemon.run("transcript --json").output).size(), 1) << "the other is not whole";
    daemon.start();
    const std::time_t before = time(nullptr);
    call(find_user("bob"));
    daemon.run("order delay 20");
    call(find_user("bob"));
    daemon.run("order fail");
    call(find_user("bob"));
    const Json all = Json::parse(daemon.run("transcript --json").output);
    ASSERT_EQ(all.size(), 4);
    EXPECT_EQ(all[0],
        Json::parse(R"({"n": 1, "time": null, "milliseconds": null, "stages": null, "request": "old", "reply": null,
        "order": "fail"})"));
    for (std::size_t i = 1; i < all.size(); ++i) {
        const std::string text = all[i].at("time");
        tm parts{};
        EXPECT_THAT(text, MatchesRegex(R"(....-..-..T..:..:..\....Z)"));
        strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
        EXPECT_GE(timegm(&parts), before);
        EXPECT_LE(timegm(&parts), time(nullptr));
    }
    EXPECT_GE(all[1].at("milliseconds"), 0);
    for (const char* stage : {"request", "database", "reply"})
        EXPECT_GT(all[1].at("stages").at(stage), 0) << stage;
    EXPECT_EQ(all[1].at("stages").at("files"), 0);
    EXPECT_GE(all[2].at("milliseconds"), 20);
    EXPECT_EQ(all[3].at("milliseconds"), Json());
    const std::string text = daemon.run("transcript").output;
    EXPECT_THAT(text,
        MatchesRegex("--- 1\nordered: fail\nold\n\\(no reply\\)\n--- 2, ....-..-.. ..:..:..\\.... UTC, "
                     "[0-9]+\\.[0-9] ms\n<(.|\n)*\n--- 4, ....-..-.. ..:..:..\\.... UTC\nordered: fail\n(.|\n)*"));
}

TEST(Transcript, OfADeepRequestIsNoLongerThanItsLines)
{
    constexpr std::size_t COUNT = 5000;
    const Daemon daemon;
    std::string request;
    for (std::size_t i = 0; i < COUNT; ++i)
        request += "<a>";
    call(request);
    const std::string text = daemon.run("transcript").output;
    EXPECT_THAT(text, HasSubstr("\n<a>\n  <a>\n    <a>\n      <a>\n"));
    EXPECT_LT(text.size(), COUNT * 80);
}

TEST(Commands, BadUseIsOneLineAndAStatus)
{
    const std::string commands = ": there are serve, seed, show, transcript, order, chaos, send, revive";
    const std::string counts = " not in range 0 to 2147483647";
    const struct {
        const char* arguments;
        int status;
        std::string complaint; // the end of it
    } cases[] = {
        {"", 2, "which command?" + commands},
        {"frobnicate", 2, "unknown command frobnicate" + commands},
        {"--frobnicate", 2, "unknown option --frobnicate" + commands},
        {"send", 2, "FILE is required"},
        {"send /nowhere", 1, "/nowhere: No such file or directory"},
        {"revive now", 2, "The following argument was not expected: now"},
        {"revive", 2, "this is no device: devkit/device/device starts one, whose daemon can be revived"},
        {"show all", 2, "The following argument was not expected: all"},
        {"--state", 2, "--state: 1 required TEXT missing"},
        {"seed", 2, "FILE is required"},
        {"seed /nowhere", 1, "/nowhere: No such file or directory"},
        {"order maybe", 2, "KIND: maybe not in {refuse,refuse-bare,reply,no-reply,cut,delay,hang,fail,die,list,clear}"},
        {"order refuse", 2, "order refuse: needs a TEXT"},
        {"order fail text", 2, "order fail: takes no TEXT"},
        {"order cut x", 2, "order cut: needs a number of bytes"},
        {"order delay", 2, "order delay: needs a TEXT"},
        {"order delay 1s", 2, "order delay: needs a number of milliseconds"},
        {"order delay 1000000000", 2, "order delay: needs a number of milliseconds"},
        {"order hang 5", 2, "order hang: takes no TEXT"},
        {"order fail --for ''", 2, "--for: it is empty"},
        {"order list --for x", 2, "order list: takes no --for"},
        {"order clear --skip 1", 2, "order clear: takes no --skip"},
        {"order list all", 2, "order list: takes no TEXT"},
        {"order fail --json", 2, "order fail: takes no --json"},
        {"order cut 1 --skip -1", 2, "--skip: Value -1" + counts},
        {"order fail --count x", 2, "--count: Value x" + counts},
        {"order reply @/nowhere", 1, "/nowhere: No such file or directory"},
        {"chaos --seed 1", 2, "chaos: needs a --rate, or off"},
        {"chaos --rate 1", 2, "chaos: needs a --seed, or off"},
        {"chaos on", 2, "OFF: on not in {off}"},
        {"chaos off --count 1", 2, "chaos off: takes no --count"},
        {"chaos --seed 1 --rate 0", 2, "--rate: Value 0 not in range 1 to 100"},
        {"chaos --seed 1 --rate 101", 2, "--rate: Value 101 not in range 1 to 100"},
        {"chaos --seed 1 --rate 0.5", 2, "--rate: Value 0.5 not in range 1 to 100"},
        {"chaos --seed 4294967296 --rate 1", 2, "--seed: Value 4294967296 not in range 0 to 4294967295"},
        {"chaos --seed 1 --rate 1 --count -1", 2, "--count: Value -1" + counts},
        {"chaos --seed 1 --rate 1 --kinds cut,,die", 2,
            "--kinds: unknown kind \"\": there are refuse,refuse-bare,no-reply,cut,delay,hang,fail,die"},
        {"serve --client-timeout 0", 2, "--client-timeout: Value 0 not in range 1 to 2147483647"},
        {"transcript --from -1", 2, "--from: Value -1 not in range 1 to 2147483647"},
        {"transcript --from 0", 2, "--from: Value 0 not in range 1 to 2147483647"},
        {"show --state /proc/none", 1, "/proc/none/state.db: No such file or directory"},
        {"transcript --state /proc/none", 1, "/proc/none/state.db: No such file or directory"},
        {"order clear --state /proc/none", 1, "/proc/none: No such file or directory"},
        {"serve", 1, ": a daemon is running already"},
    };
    const Daemon daemon;
    for (const auto& [arguments, status, complaint] : cases) {
        SCOPED_TRACE(arguments);
        const Outcome run = daemon.run(arguments);
        EXPECT_EQ(run.status, status);
        EXPECT_THAT(run.output, MatchesRegex("boxwelld: [^\n]+\n"));
        EXPECT_THAT(run.output, EndsWith(complaint + '\n'));
    }
    EXPECT_THAT(daemon.run("show").output, HasSubstr("  1003    dave "));
}

/** Its own files would be the machine's. */
TEST(Commands, OutsideOfADeviceTheFilesMustBeNamed)
{
    const std::string all = "state passwd group socket";
    const struct {
        const char* arguments;
        std::string needed;
    } cases[] = {
        {"show", "state"},
        {"transcript", "state"},
        {"order clear", "state passwd group"},
        {"order list", "state"},
        {"chaos off", "state passwd group"},
        {"seed /dev/null", "state passwd group"},
        {"serve", all},
        {"send /dev/null", "socket"},
    };
    const Daemon daemon;
    for (const auto& [arguments, needed] : cases) {
        std::istringstream names(all);
        for (std::string name; names >> name;) {
            SCOPED_TRACE(arguments + (' ' + name));
            std::string variable = "BOXWELLD_" + name;
            std::transform(variable.begin(), variable.end(), variable.begin(), toupper);
            const std::string value = getenv(variable.c_str());
            unsetenv(variable.c_str());
            const Outcome run = daemon.run(arguments);
            setenv(variable.c_str(), value.c_str(), 1);
            const std::string refusal = "boxwelld: this is no device: devkit/device/device starts one, ./dev demo shows"
                                        " one at work; elsewhere --" +
                                        name + " must be given\n";
            const bool is_needed = needed.find(name) != std::string::npos;
            EXPECT_EQ(run.output == refusal, is_needed) << run.output;
            EXPECT_EQ(run.status == 2, is_needed);
        }
    }
}

TEST(Commands, ThatReadMakeNothing)
{
    const Daemon daemon;
    for (const char* command : {"show", "transcript", "order list"}) {
        EXPECT_EQ(daemon.run(command + (" --state " + daemon.path("none"))).status, 1);
        EXPECT_FALSE(std::filesystem::exists(daemon.path("none"))) << command;
    }
}
