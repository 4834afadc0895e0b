#include "tools/soak/mix.h"

#include "devkit/broker/base64.h"
#include "tools/soak/texts.h"

#include <cctype>

namespace {

constexpr std::size_t MANY_ACCOUNTS = 30;

using Texts = std::vector<std::string>;

const std::string LONG = "abcdefghijklmnopqrstuvwxyz0123456789"; // 36 bytes

// Names that meet each other: by case, behind the 31st byte, behind the 27th, as an address.
const Texts NAMES = {
    "ann",
    "bob",
    "Bob",
    "carol",
    "dave",
    "eve",
    "ann@example.com",
    "bob@example.com",
    "carol@home.example",
    "dave@a.very.long.domain.example.com",
    LONG,
    LONG + "@example.com",
    LONG.substr(0, 31),
    LONG.substr(0, 27),
    LONG.substr(0, 27) + "0000",
    "leafuser_7",
    "r\xC3\xA9my"};

const Texts HOSTILE = {
    "", "root", "daemon", "nobody", "a:b", "a/b", "../x", "-rf", "#x", " lead", "trail ", "r&d",
    "a<b", "<owner>bob</owner>", "</owner>", "<p2powner>eve</p2powner>", "a\"b", "it's", "$(true)",
    "`true`", "a;true", "a\nb", "a\rb", "a\r\nb", "a\tb",
    "a\x01"
    "b",
    "a]]>b", "\xFF", "%s%n%d", "a\\b", "*", ",", "\x7F", "(null)", "admin", "sky-hold",
    std::string(300, 'x'), std::string(5000, 'y'),
    // cut within a character
    "123456789012345678901234567890\xC3\xA9", "\xC3\xA9\xC3\xA9\xC3\xA9"};

const Texts HASHES = {
    "4E3:$1$salt$system", "A:B:C", ":",      "SMB:",   ":system", "4E3:$1$salt$system",
    "no colon",           "",      "a]]>:b", "a:\xFF", "a\n:b",   "<x>&:y"};

const Texts TOKENS = {
    "t0",
    "t1",
    "t2",
    "t3",
    "t4",
    "t5",
    "t6",
    "t7",
    "t8",
    "t9",
    "T0",
    "a b",
    "t\n0",
    "%s",
    "\xFF",
    "*",
    "",
    ".",
    "..",
    "a/b",
    "no/../t0",
    std::string(223, 't'),
    std::string(224, 't'),
    std::string(300, 't'),
    ".hidden",
    "-t"};

const Texts EXPIRIES = {"0", "0", "0", "86400", "1", "", "00", "-1", "0\n"};

std::string account_name(Random& random, const State& state)
{
    return state.accounts.empty() ? "" : random.of(state.accounts).second.name;
}

std::string name(Random& random, const State& state)
{
    const std::uint64_t kind = random.below(100);
    return kind < 50   ? random.of(NAMES)
           : kind < 85 ? account_name(random, state)
                       : random.of(HOSTILE);
}

/** The name of an account of which `holds` is true; empty without one. */
template<class Condition>
std::string account_of(Random& random, const State& state, const Condition& holds)
{
    Texts names;
    for (const auto& [id, account] : state.accounts) {
        if (holds(account)) {
            names.push_back(account.name);
        }
    }
    return names.empty() ? "" : random.of(names);
}

std::string in_other_case(std::string text)
{
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

std::string owners_login(Random& random, const State& state)
{
    const std::string file = state.owner_file.value_or("");
    const std::string login = random.percent(70) ? between(file, "<owner>", "</owner>")
                                                 : between(file, "<p2powner>", "</p2powner>");
    return random.percent(20) ? in_other_case(login) : login;
}

std::optional<std::string> credentials(Random& random, const State& state)
{
    const auto member = [&](bool locked) {
        return account_of(random, state, [&](const Account& account) {
            return account.locked == locked && account.group == "sky-hold";
        });
    };
    const std::uint64_t who = random.below(100);
    const std::string password = random.percent(90) ? ":secret:more" : ":";
    if (who < 55) {
        return owners_login(random, state) + password;
    }
    if (who < 75) {
        return member(false) + password;
    }
    if (who < 83) {
        return member(true) + password;
    }
    if (who < 93) {
        return name(random, state) + (random.percent(80) ? password : "");
    }
    return who < 96 ? std::nullopt : std::optional(random.of(HOSTILE) + password);
}

std::string pair(Random& random)
{
    return base64(random.percent(75) ? HASHES[0] : random.of(HASHES));
}

Texts words(Random& random, const State& state)
{
    const auto any = [&] {
        return name(random, state);
    };
    if (state.accounts.size() > MANY_ACCOUNTS && random.percent(30)) {
        return {"deleteuser", account_name(random, state), any()};
    }
    const std::uint64_t kind = random.below(100);
    if (kind < 20) {
        return {"adduser", any(), pair(random), any()};
    }
    if (kind < 30) {
        return {"deleteuser", any(), any()};
    }
    if (kind < 48) {
        const std::string email = any();
        const bool same = random.percent(50);
        return {"updateuser", any(), pair(random), email, same ? email.substr(0, 31) : any()};
    }
    if (kind < 61) {
        return {"upgradeusertosso", any(), any(), random.percent(40) ? "" : pair(random)};
    }
    if (kind < 70) {
        return {"addremoteuser", any()};
    }
    if (kind < 73) {
        return {"unregister"};
    }
    if (kind < 97) {
        return {"initlocalsession", any(), random.of(TOKENS), random.of(EXPIRIES)};
    }
    return {random.of(Texts{"AddUser", "", "adduser ", "reboot", "unregister\n"}), any()};
}

} // namespace

Command drawn_command(Random& random, const State& state)
{
    Command command;
    command.words = words(random, state);
    if (random.percent(4)) {
        command.words.resize(random.below(command.words.size())); // parameters are missing
    }
    command.credentials = credentials(random, state);
    command.log_level = random.percent(90) ? 3 : 7;
    return command;
}

std::string shown(const Command& command)
{
    std::string line;
    for (const std::string& word : command.words) {
        line += shown(word) + ' ';
    }
    return line + (command.credentials ? "as " + shown(*command.credentials) : "by nobody");
}
