#include "devkit/boxwelld/account_checks.h"
#include "devkit/boxwelld/store.h"

namespace {

constexpr char NEXT_ID[] =
    "SELECT max(1000, coalesce((SELECT seq FROM sqlite_sequence WHERE name = 'accounts'), 0)) + 1";

// What is not bound stays.
constexpr char SET_ACCOUNT[] =
    "UPDATE accounts SET name = coalesce(:name, name), group_id = coalesce(:group_id, group_id),"
    " locked = coalesce(:locked, locked), email = coalesce(:email, email),"
    " smb_hash = coalesce(:smb_hash, smb_hash), sys_hash = coalesce(:sys_hash, sys_hash),"
    " p2p_user_name = coalesce(:p2p_user_name, p2p_user_name) WHERE id = :id";
constexpr char MEMBER_OF[] = "SELECT name FROM memberships JOIN groups ON id = group_id"
                             " WHERE account_id = ? ORDER BY name";
constexpr char RENAME_OWNER[] =
    "UPDATE cloud_owner SET name = ? WHERE name = (SELECT name FROM accounts WHERE id = ?)";

void bind(BoundStatement& row, const char* parameter, const std::optional<std::string>& text)
{
    if (text) {
        row->bind(parameter, *text);
    }
}

Refusal unknown(std::int64_t id)
{
    return Refusal("No user with id " + std::to_string(id));
}

} // namespace

std::int64_t Store::group_id(const std::string& name)
{
    BoundStatement row(database_, "SELECT id FROM groups WHERE name = ?", name);
    if (!row->executeStep()) {
        throw Refusal("Unknown group " + name);
    }
    return row->getColumn(0).getInt64();
}

std::int64_t Store::add_account(const AccountFields& fields, std::optional<std::int64_t> id)
{
    check_name("user", fields.name.value_or(""));
    const std::int64_t new_id = choose_id(id, NEXT_ID);
    // Nameless for a moment: the rest is what a set does anyway.
    execute(
        database_, "INSERT INTO accounts (id, name, group_id) VALUES (?, '', ?)", new_id,
        group_id(fields.group.value_or(""))
    );
    set_account(new_id, fields);
    return new_id;
}

void Store::set_account(std::int64_t id, const AccountFields& fields)
{
    if (!exists(database_, "SELECT 1 FROM accounts WHERE id = ?", id)) {
        throw unknown(id);
    }
    if (fields.name) {
        expect_free(*fields.name, id);
        execute(database_, RENAME_OWNER, *fields.name, id);
    }
    if (fields.name || fields.group) {
        touch(id);
    }
    BoundStatement change(database_, SET_ACCOUNT);
    change->bind(":id", id);
    bind(change, ":name", fields.name);
    if (fields.group) {
        change->bind(":group_id", group_id(*fields.group));
    }
    if (fields.locked) {
        change->bind(":locked", *fields.locked ? 1 : 0);
    }
    const std::pair<const char*, const std::optional<std::string>&> texts[] = {
        {":email", fields.email},
        {":smb_hash", fields.smb_hash},
        {":sys_hash", fields.sys_hash},
        {":p2p_user_name", fields.p2p_user_name},
    };
    for (const auto& [parameter, text] : texts) {
        if (text) {
            check_text(parameter + 1, *text);
        }
        bind(change, parameter, text);
    }
    change->exec();
}

void Store::expect_free(const std::string& name, std::int64_t id)
{
    check_name("user", name);
    if (exists(database_, "SELECT 1 FROM accounts WHERE name = ? AND id <> ?", name, id) ||
        passwd_.is_taken(name)) {
        throw Refusal("User " + name + " already exists");
    }
}

void Store::delete_account(std::int64_t id)
{
    touch(id);
    if (execute(database_, "DELETE FROM accounts WHERE id = ?", id) == 0) {
        throw unknown(id);
    }
}

void Store::add_membership(std::int64_t account, const std::string& group)
{
    execute(database_, "INSERT OR IGNORE INTO memberships VALUES (?, ?)", account, group_id(group));
    replace_files_ = true;
}

std::vector<Account> Store::find_accounts(Property property, Match match, const std::string& value)
{
    const std::string column = property == Property::UserName ? "a.name" : "a.email";
    const std::string condition =
        match == Match::Equal ? column + " = ?" : "instr(lower(" + column + "), lower(?)) > 0";
    BoundStatement row(
        database_,
        "SELECT a.id, a.name, g.name, locked, email, smb_hash, sys_hash, p2p_user_name"
        " FROM accounts a JOIN groups g ON g.id = group_id WHERE " +
            condition + " ORDER BY a.name",
        value
    );
    std::vector<Account> found;
    while (row->executeStep()) {
        found.push_back(
            {row->getColumn(0).getInt64(),
             row->getColumn(1),
             row->getColumn(2),
             row->getColumn(3).getInt() != 0,
             row->getColumn(4),
             row->getColumn(5),
             row->getColumn(6),
             row->getColumn(7),
             {}}
        );
        BoundStatement membership(database_, MEMBER_OF, found.back().id);
        while (membership->executeStep()) {
            found.back().member_of.push_back(membership->getColumn(0));
        }
    }
    return found;
}

std::vector<Account> Store::accounts()
{
    return find_accounts(Property::UserName, Match::Like, "");
}
