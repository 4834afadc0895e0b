// Whole commands: with a fault, what must hold whatever fails; without one, what the contract says.
#include "devkit/broker/transaction.h"
#include "syscmd/handler.h"
#include "syscmd/sessions/record.h"
#include "syscmd/sessions/sweep.h"
#include "syscmd/strict.h"
#include "tools/fuzz/device.h"
#include "tools/fuzz/strict.h"
#include "tools/fuzz/targets.h"

#include <regex>

namespace {

struct Recipient final : Transaction {
    using Transaction::Transaction;
    int addResponseParam(const std::string& value) override
    {
        const Aside aside;
        device.responses.push_back(value);
        return 0;
    }
};

Outcome run(const Case& test, const Fault& fault)
{
    prepare(test);
    const long before = liveResources() + openDescriptors();
    bool threw = false;
    {
        Recipient transaction({test.words, test.credentials, 7});
        try {
            withFault(fault, [&] { execute(&transaction); });
        } catch (...) {
            threw = true;
        }
        device.code = transaction.getCode();
    }
    const long kept = liveResources() + openDescriptors() - before;
    expectSame(std::to_string(kept) + (threw ? ", threw" : ""), "0", "left behind");
    device.files = filesNow();
    return device;
}

/** The requests, a letter each: query, add, set or delete. */
std::string pathOf(const std::vector<std::string>& asked)
{
    std::string path;
    for (const std::string& request : asked) { // longer than any name in front of it: the declaration
        const std::size_t xml = request.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
        const std::size_t at = xml == request.npos ? xml : request.find("<xs:transaction", xml);
        path += at == request.npos ? "" : request.substr(request.find("<xs:", at + 1) + 4, 1);
    }
    return path;
}

void judgeFaulty(const Case& test, const Outcome& outcome)
{
    static const std::map<std::string, std::string> paths = {{"adduser", "q?q?(dd?)?a?"}, {"addremoteuser", "q?a?"},
        {"deleteuser", "q?q?d?d?"}, {"updateuser", "q?(qs?){0,2}s?"}, {"upgradeusertosso", "q?s?"},
        {"initlocalsession", "q?"}, {"unregister", "s?"}, {"", ""}};
    const std::string operation = test.words.empty() || !paths.contains(test.words[0]) ? "" : test.words[0];
    const std::string path = pathOf(outcome.asked);
    const bool succeeded = outcome.code == CODE_SUCCEED;
    const auto finding = [&](bool is_one, const char* what) {
        expectSame(is_one ? path + '!' : "", "", what);
    };
    finding(!std::regex_match(path, std::regex(paths.at(operation))), "an illegal path");
    finding(outcome.responses.size() != 1 || outcome.code == CODE_UNDEFINED, "not one code and one response");
    finding(succeeded != (outcome.responses[0] == "success"), "code and response differ");

    const bool may =
        operation == "unregister" || isOwnersOwn(test) || (!operation.starts_with("add") && isMembersOwn(test));
    const bool acted = path.find_first_not_of('q') != path.npos || outcome.files.told() != test.files.told();
    finding(!may && (acted || succeeded), "admitted");
    const bool sets = operation.starts_with("up");
    finding(succeeded && (sets || operation == "adduser") && !path.ends_with(sets ? 's' : 'a'), "success without work");
    // What does not fit the disk any more shows when the file is closed, which nobody looks at.
    const std::string owner = outcome.files.owner.value_or("");
    const bool is_whole = outcome.files.owner == test.files.owner || owner.ends_with("</registration>");
    finding(succeeded && !is_whole && test.fault.kind != std::string("fclose"), "success with half an owner file");
}

void judge(const Case& test)
{
    if (*test.fault.kind != '\0') {
        const Outcome outcome = run(test, test.fault);
        if (STRICT) {
            expectStructure(outcome, test.files);
            expectOwnAccount(test, outcome);
        }
        judgeFaulty(test, outcome);
    }
    const Outcome outcome = run(test, {});
    if (STRICT) {
        expectStructure(outcome, test.files);
        expectOwnAccount(test, outcome);
    }
    expectSame(outcome.told(), foretold(test).told(), "a command");
}

} // namespace

#ifdef SYSCMD_STRICT

FUZZ(commands_strict)
{
    watchStrictly();
    judge(trustworthy(Case(input)));
}

#else

FUZZ(commands)
{
    const Case test(input);
    if (test.is_contained) {
        judge(test);
    }
}

FUZZ(sessions) // words: the user, the token, the expiry
{
    Case test(input);
    test.words.resize(3);
    const std::string user = read(test.words[0]), token = read(test.words[1]);
    if (token.find('/') != token.npos) {
        return;
    }
    prepare(test);
    const bool pinned = test.words[2] == PINNED;
    CleanupObsoleteLocalSessions(pinned ? user.c_str() : nullptr);
    UpdateLocalSessionRecords(token.c_str(), user.c_str(), pinned ? PINNED : "1");
    const Files files = filesNow();
    foretellSession(test.files, user, token, pinned);
    expectSame(files.told(), test.files.told(), "records");
}

#endif
