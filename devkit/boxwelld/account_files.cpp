#include "devkit/boxwelld/account_files.h"

#include "devkit/boxwelld/files.h"

#include <fcntl.h>

#include <algorithm>
#include <map>

namespace {

constexpr std::string_view BEGIN = "# boxwelld: its accounts, rewritten at every change\n";
constexpr std::string_view END = "# boxwelld: end\n";

/** A file's text without the daemon's section, and where in it the section stood or is to stand. */
struct Others {
    std::string text;
    std::size_t section = 0;
};

Others split(const std::string& path, std::string text)
{
    const std::size_t begin = text.find(BEGIN);
    if (begin == std::string::npos) {
        if (!text.empty() && text.back() != '\n') {
            text += '\n';
        }
        const std::size_t end = text.size();
        return {std::move(text), end};
    }
    const std::size_t end = text.find(END, begin);
    if (end == std::string::npos) { // which lines are somebody else's, nobody knows
        throw Refusal(path + ": the line \"" + one_line(std::string(END)) + "\" is missing");
    }
    text.erase(begin, end + END.size() - begin);
    return {std::move(text), begin};
}

bool is_member(const Account& account, const Group& group)
{
    return std::find(account.member_of.begin(), account.member_of.end(), group.name) !=
           account.member_of.end();
}

} // namespace

std::string passwd_lines(const std::vector<Account>& accounts, const std::vector<Group>& groups)
{
    std::map<std::string, std::int64_t> ids;
    for (const Group& group : groups) {
        ids[group.name] = group.id;
    }
    std::string lines;
    for (const Account& account : accounts) {
        lines += account.name + ":x:" + std::to_string(account.id) + ':' +
                 std::to_string(ids[account.group]) + "::/home/" + account.name + ":/bin/false\n";
    }
    return lines;
}

std::string group_lines(const std::vector<Account>& accounts, const std::vector<Group>& groups)
{
    std::string lines;
    for (const Group& group : groups) {
        std::string members;
        for (const Account& account : accounts) {
            if (is_member(account, group)) {
                members += (members.empty() ? "" : ",") + account.name;
            }
        }
        lines += group.name + ":x:" + std::to_string(group.id) + ':' + members + '\n';
    }
    return lines;
}

void rewrite_section(const std::string& path, std::string_view lines)
{
    const Fd file = open_file(path, O_RDWR);
    const std::string before = read_all(file, path);
    Others others = split(path, before);
    if (!lines.empty()) {
        others.text.insert(others.section, std::string(BEGIN).append(lines).append(END));
    }
    if (others.text != before) {
        overwrite(file, path, others.text);
    }
}

bool is_taken(const std::string& path, const std::string& name)
{
    const std::string text = '\n' + split(path, read_text(path)).text;
    return text.find('\n' + name + ':') != std::string::npos;
}
