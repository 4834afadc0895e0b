// Replies, the owner file, files of lines, and texts: each against a literal reference.
#include "common/base64.h"
#include "common/device/owner_file.h"
#include "common/isowner.h"
#include "common/log.h"
#include "common/mxl/reply.h"
#include "devkit/broker/transaction.h"
#include "liblst/liblst.h"
#include "syscmd/daemon/password_pair.h"
#include "syscmd/daemon/user_records.h"
#include "syscmd/handler.h"
#include "tools/fuzz/device.h"
#include "tools/fuzz/targets.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <iterator>

namespace {

std::string listed(char** list)
{
    std::string text;
    for (char** entry = list; list != nullptr && *entry != nullptr; ++entry) {
        text += std::string("[") + *entry + "]\n";
    }
    lstFree(list);
    return list != nullptr ? text : "";
}

/** `text` without the characters of which `is_out` is true. */
std::string without(const std::string& text, int (*is_out)(int))
{
    std::string rest;
    for (const char one : text) {
        rest += is_out(static_cast<unsigned char>(one)) != 0 ? std::string() : std::string(1, one);
    }
    return rest;
}
int isLineEnd(int one)
{
    return one == '\r' || one == '\n' ? 1 : 0;
}

std::string replaced(const std::string& text, const std::string& search, const std::string& by)
{
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const bool matches = !search.empty() && text.compare(at, search.size(), search) == 0;
        result += matches ? by : text.substr(at, 1);
        at += matches ? search.size() : 1;
    }
    return search.empty() ? text + by : result;
}

/** A descriptor of a file with this content. */
int fileOf(const std::string& content)
{
    const int fd = memfd_create("fuzz", MFD_CLOEXEC);
    expectSame(std::to_string(write(fd, content.data(), content.size())), std::to_string(content.size()), "file");
    lseek(fd, 0, SEEK_SET);
    return fd;
}

} // namespace

FUZZ(replies)
{
    const std::string reply = read(input);
    const std::string tag = between(reply, "<xs:response", "<");
    char* text = nullptr;
    GetMXLStatus(&text, reply.c_str());
    expectSame(owned(text), between(tag, "status=\"", "\">"), "status");
    GetMXLErrorDetail(&text, reply.c_str());
    expectSame(owned(text), cdata(reply, "xs:error-details"), "detail");

    UserRecords records = {.cursor = reply.c_str()};
    UserRecord record;
    std::string walked;
    while (nextRecord(&records, &record)) {
        for (const std::string_view field : {record.id, record.group, record.name, record.email}) {
            walked += std::string(field) + '|';
        }
    }
    std::string expected;
    for (std::size_t at = 0; (at = reply.find("<User id=", at + 1)) != reply.npos;) {
        const std::string rest = reply.substr(at);
        expected += between(rest, "<User_Id>", "</User_Id>") + '|';
        for (const std::string name : {"Group_Name", "User_Name", "Email_Address"}) {
            expected += cdata(rest, name) + '|';
        }
    }
    expectSame(walked, expected, "records");

    Case test("");
    test.replies = {{false, reply}};
    prepare(test);
    text = nullptr;
    const long lock = isLocked("bob", &text);
    expectSame(owned(text), cdata(reply, "User_Name"), "name");
    expectSame(std::to_string(lock),
        std::to_string(strtol(between(reply, "<IsLocked>", "</IsLocked>").c_str(), nullptr, 10)), "lock");
}

FUZZ(owner) // the user, and the file
{
    Case test("");
    test.files.owner = input.substr(std::min(input.find('\n'), input.size() - 1) + 1);
    test.credentials = read(input.substr(0, input.find('\n'))) + ':';
    prepare(test);
    const std::string file = read(*test.files.owner);
    const bool is_there = !test.files.owner->empty();
    expectSame(owned(GetSSOOwner()), is_there ? between(file, "<owner>", "</owner>") : "(null)", "owner");
    expectSame(owned(GetP2POwner()), is_there ? between(file, "<p2powner>", "</p2powner>") : "(null)", "p2p owner");
    const std::string login = test.credentials->substr(0, std::min<std::size_t>(31, test.credentials->find(':')));
    expectSame(std::to_string(isOwner(login.c_str())), isOwnersOwn(test) ? "1" : "0", "is owner");
}

FUZZ(configuration)
{
    const std::string text = read(input);
    std::ofstream("/run/fuzz.conf") << input;
    std::vector<std::string> entries;
    for (std::size_t at = 0, end = 0; end < text.size(); at = end + 1) {
        end = std::min(text.find('\n', at), text.size());
        const std::string line = without(text.substr(at, end - at), isspace);
        const std::size_t equals = line.find('=');
        if (equals != line.npos && equals > 0 && equals + 1 < line.size() && line[0] != '#') {
            entries.insert(entries.end(), {line.substr(0, equals), line.substr(equals + 1)});
        }
    }
    expectSame(listed(readConfig("/run/fuzz.conf")), joined(entries), "entries");
}

FUZZ(lines)
{
    // A last line without an end comes again and again.
    const std::ptrdiff_t enough = std::count(input.begin(), input.end(), '\n') + 3;
    std::string actual, expected, pending;
    const int fd = fileOf(input);
    char* row = nullptr;
    ssize_t length = 0;
    for (std::ptrdiff_t rows = 0; rows < enough && (length = readFileRow(&row, fd)) > 0; ++rows) {
        actual += std::to_string(length) + owned(row) + '\n';
    }
    close(fd);
    const int end = fileOf("\n"); // ends what is pending
    while (readFileRow(&row, end) > 0) {
        free(row);
    }
    close(end);

    std::size_t at = 0;
    for (std::ptrdiff_t rows = 0; rows < enough; ++rows) {
        for (; pending.find('\n') == pending.npos && at < input.size(); at += 512) {
            pending += read(input.substr(at, 512));
        }
        if (pending.empty()) {
            break;
        }
        const std::string line = pending.substr(0, std::min(pending.find('\n'), pending.size() - 1) + 1);
        const std::string shown = without(line, isLineEnd);
        expected += std::to_string(shown.size() + 1) + shown + '\n';
        pending = line.back() == '\n' ? replaced(pending, line, "") : pending;
    }
    expectSame(actual, expected, "rows");
}

FUZZ(split) // the splitter, and the text
{
    const std::string text = input.empty() ? "" : read(input.substr(1));
    std::vector<std::string> fields(1);
    for (const char one : text) {
        one == input[0] ? fields.emplace_back() : fields.back() += one;
    }
    std::erase(fields, "");
    expectSame(listed(lstSplitStr(input.empty() ? ',' : input[0], text.c_str())), joined(fields), "fields");
}

FUZZ(replace) // what is looked for; what takes its place, or ends what is cut out behind it; the text
{
    const std::vector<std::string> fields = fieldsOf(input, 3);
    const char *search = fields[0].c_str(), *by = fields[1].c_str(), *text = fields[2].c_str();
    char* copy = strdup(text);
    replaceStrFormat(&copy, search, "%s", by);
    expectSame(owned(copy), replaced(text, search, by), "replaced");
    CutStr(&copy, text, search, by);
    expectSame(owned(copy), between(text, search, by), "CutStr");
    const std::string never(1, '\0');
    expectSame(owned(ptCutStr(text, search, by)), between(text, search, *by != '\0' ? by : never), "ptCutStr");
}

FUZZ(trim)
{
    const std::string text = read(input);
    const auto edited = [&](auto edit) {
        char* copy = strdup(text.c_str());
        edit(copy);
        return owned(copy);
    };
    std::string trimmed = text;
    while (!trimmed.empty() && isspace(static_cast<unsigned char>(trimmed.back())) != 0) {
        trimmed.pop_back();
    }
    while (!trimmed.empty() && isspace(static_cast<unsigned char>(trimmed.front())) != 0) {
        trimmed.erase(0, 1);
    }
    expectSame(edited(trimStr), trimmed, "trimStr");
    expectSame(edited(chopStr), without(text, isLineEnd), "chopStr");
    expectSame(edited(delGaps), without(text, isspace), "delGaps");
}

FUZZ(base64) // a text, or a pair of hashes
{
    expectSame(owned(ptDecodeBase64(input.c_str())), decoded(input), "decoded");
    char* copy = nullptr;
    PasswordPair hashes = {"", ""};
    const bool is_pair = decodePasswordPair(&copy, &hashes, input.c_str()) == 0;
    expectSame(is_pair ? joined({hashes.smb, hashes.system}) : "", joined(pairOf(input)), "pair");
    free(copy);
}

FUZZ(credentials) // Base64: who is asked for
{
    struct Bearer final : Transaction {
        using Transaction::Transaction;
        bool getAuthInfo(std::string& value) const override
        {
            value = base64;
            return true;
        }
        std::string base64;
    } bearer{Command()};
    bearer.base64 = input;
    Case test("");
    test.credentials = decoded(input);
    prepare(test);
    int is_owner = 0;
    int is_member = 0;
    const int result = AuthenticateUser("updateuser", &bearer, is_owner, is_member);
    const std::vector<std::string> asked = device.asked;
    const bool owns = isOwnersOwn(test), may = owns || isMembersOwn(test);
    test.words = {"updateuser"}; // which asks for nothing else
    expectSame(joined(asked), joined(foretold(test).asked), "login");
    expectSame(joined({std::to_string(result), std::to_string(is_owner), std::to_string(is_member)}),
        joined({may ? "0" : "-1", owns ? "1" : "0", may ? "1" : "0"}), "flags");
}

FUZZ(log) // a digit, the journal's threshold, and the text
{
    const std::string text = input.empty() ? "" : read(input.substr(1));
    static std::vector<std::string> entries;
    entries.clear();
    on_entry = [](const char*, const char* message) {
        entries.emplace_back(message);
    };
    prepare(Case(""));
    MAX_LOG_LEVEL = input.empty() ? 7 : input[0] - '0';
    const LogLevel level = text.size() % 2 == 0 ? LogLevel::Info : LogLevel::Error;
    logStatement(level, "unit.cpp", 42, "function", "%s", text.c_str());
    on_entry = nullptr;

    const std::string place = level == LogLevel::Info ? "INFO:unit.cpp:42" : "ERROR:unit.cpp:42";
    std::vector<std::string> lines(1);
    for (const char one : MAX_LOG_LEVEL < static_cast<int>(level) ? "" : place + ": " + text) {
        isLineEnd(one) != 0 ? lines.emplace_back() : lines.back() += one;
    }
    lines.pop_back(); // what has no end
    std::erase(lines, "");
    expectSame(joined(entries), joined(lines), "entries");
    std::ifstream file("/var/log/shbroker.log");
    expectSame({std::istreambuf_iterator<char>(file), {}}, "Mar  4 2026 05:06:07 " + place + ' ' + text, "file");
}
