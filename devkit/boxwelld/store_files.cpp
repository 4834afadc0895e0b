// What of the state stands in passwd and group.
#include "devkit/boxwelld/stages.h"
#include "devkit/boxwelld/store.h"

#include <utility>

namespace {

constexpr char ACCOUNTS[] = "SELECT name, id, group_id FROM accounts";
constexpr char MEMBERS[] = "SELECT name FROM memberships JOIN accounts ON id = account_id"
                           " WHERE memberships.group_id = ? ORDER BY name";

/** The line of a row of ACCOUNTS: home /home/NAME, shell /bin/false, no hashes. */
std::string line_of(BoundStatement& row)
{
    const std::string name = row->getColumn(0);
    return name + ":x:" + row->getColumn(1).getString() + ':' + row->getColumn(2).getString() +
           "::/home/" + name + ":/bin/false\n";
}

} // namespace

void Store::read_account_files()
{
    const Timed timed(Stage::Files);
    touched_accounts_.clear();
    touched_groups_.clear();
    BoundStatement row(database_, "PRAGMA data_version");
    row->executeStep();
    const std::int64_t version = row->getColumn(0);
    if (std::exchange(version_, version) != version || !passwd_.is_known() || !group_.is_known()) {
        replace_files_ = true;
    }
    if (replace_files_) {
        passwd_.read();
        group_.read();
    }
}

void Store::write_account_files()
{
    const Timed timed(Stage::Files);
    if (std::exchange(replace_files_, true) || !write_touched()) {
        replace_account_files();
    }
}

void Store::replace_account_files()
{
    std::vector<std::string> lines;
    BoundStatement row(database_, std::string(ACCOUNTS) + " ORDER BY name");
    while (row->executeStep()) {
        lines.push_back(line_of(row));
    }
    passwd_.replace(lines);
    lines.clear();
    for (const Group& group : groups()) {
        lines.push_back(group_line(group.id));
    }
    group_.replace(lines);
}

bool Store::write_touched()
{
    for (const std::int64_t id : touched_accounts_) {
        if (!passwd_.set(id, passwd_line(id))) {
            return false;
        }
    }
    for (const std::int64_t id : touched_groups_) {
        if (!group_.set(id, group_line(id))) {
            return false;
        }
    }
    return true;
}

std::string Store::passwd_line(std::int64_t id)
{
    BoundStatement row(database_, std::string(ACCOUNTS) + " WHERE id = ?", id);
    return row->executeStep() ? line_of(row) : "";
}

/** Members are the accounts that are in it beside their primary group. */
std::string Store::group_line(std::int64_t id)
{
    BoundStatement group(database_, "SELECT name FROM groups WHERE id = ?", id);
    group->executeStep();
    std::string line = group->getColumn(0).getString() + ":x:" + std::to_string(id) + ':';
    BoundStatement member(database_, MEMBERS, id);
    for (const char* mark = ""; member->executeStep(); mark = ",") {
        line += mark + member->getColumn(0).getString();
    }
    return line + '\n';
}

void Store::touch(std::int64_t account)
{
    touched_accounts_.insert(account);
    BoundStatement row(database_, "SELECT group_id FROM memberships WHERE account_id = ?", account);
    while (row->executeStep()) {
        touched_groups_.insert(row->getColumn(0).getInt64());
    }
}
