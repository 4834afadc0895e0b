#include "devkit/boxwelld/store.h"

#include "devkit/boxwelld/account_checks.h"
#include "devkit/boxwelld/account_files.h"

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>
#include <SQLiteCpp/VariadicBind.h>
#include <sys/stat.h>

#include <cerrno>
#include <limits>

namespace {

// How long one process waits for another's transaction.
constexpr int BUSY_MS = 10000;

constexpr char SCHEMA[] = R"(
PRAGMA foreign_keys = ON;
PRAGMA synchronous = OFF;
CREATE TABLE IF NOT EXISTS groups (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);
CREATE TABLE IF NOT EXISTS accounts (
    id INTEGER PRIMARY KEY AUTOINCREMENT, -- an id never comes back
    name TEXT NOT NULL UNIQUE,
    group_id INTEGER NOT NULL REFERENCES groups,
    locked INTEGER NOT NULL,
    email TEXT NOT NULL,
    smb_hash TEXT NOT NULL,
    sys_hash TEXT NOT NULL,
    p2p_user_name TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS memberships (
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    group_id INTEGER NOT NULL REFERENCES groups,
    PRIMARY KEY (account_id, group_id));
CREATE TABLE IF NOT EXISTS remote_users (name TEXT PRIMARY KEY, full_name TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS cloud_owner (name TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS orders (
    id INTEGER PRIMARY KEY, kind TEXT NOT NULL, text TEXT NOT NULL,
    skip INTEGER NOT NULL, count INTEGER NOT NULL);
)";

constexpr char NEXT_ACCOUNT_ID[] =
    "SELECT max(1000, coalesce((SELECT seq FROM sqlite_sequence WHERE name = 'accounts'), 0)) + 1";
constexpr char NEXT_GROUP_ID[] = "SELECT coalesce(max(id), 1999) + 1 FROM groups";

std::string make_state_folder(const Paths& paths)
{
    if (mkdir(paths.state.c_str(), 0755) != 0 && errno != EEXIST)
        throw_errno(paths.state);
    return paths.database();
}

template<class... Values> void run(SQLite::Database& database, const char* sql, Values... values)
{
    SQLite::Statement statement(database, sql);
    SQLite::bind(statement, values...);
    statement.exec();
}

bool exists(SQLite::Database& database, const char* sql, const std::string& name)
{
    SQLite::Statement statement(database, sql);
    SQLite::bind(statement, name);
    return statement.executeStep();
}

/** The id that is asked for, or else the next; one that passwd and group cannot hold is refused. */
std::int64_t
choose_id(SQLite::Database& database, const std::optional<std::int64_t>& wanted, const char* next)
{
    const std::int64_t id = wanted ? *wanted : database.execAndGet(next).getInt64();
    if (id < 1 || id > std::numeric_limits<std::int32_t>::max())
        throw Refusal("Invalid id " + std::to_string(id));
    return id;
}

} // namespace

Store::Store(const Paths& paths)
    : paths_(paths),
      database_(make_state_folder(paths), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, BUSY_MS)
{
    database_.exec(SCHEMA);
}

void Store::change(const std::function<void()>& work)
{
    bool files_touched = false;
    try {
        SQLite::Transaction transaction(database_, SQLite::TransactionBehavior::IMMEDIATE);
        work();
        files_touched = true;
        write_account_files();
        transaction.commit();
    } catch (...) {
        if (files_touched) {
            try {
                write_account_files();
            } catch (const std::exception&) { // the first failure is the one that tells
            }
        }
        throw;
    }
}

void Store::write_account_files()
{
    const std::vector<Account> all = accounts();
    rewrite_section(paths_.passwd, passwd_lines(all, groups()));
    rewrite_section(paths_.group, group_lines(all, groups()));
}

std::int64_t Store::group_id(const std::string& name)
{
    SQLite::Statement statement(database_, "SELECT id FROM groups WHERE name = ?");
    SQLite::bind(statement, name);
    if (!statement.executeStep())
        throw Refusal("Unknown group " + name);
    return statement.getColumn(0).getInt64();
}

std::int64_t Store::add_account(const AccountFields& fields, std::optional<std::int64_t> id)
{
    const std::int64_t new_id = choose_id(database_, id, NEXT_ACCOUNT_ID);
    const std::string group = fields.group.value_or("");
    // Empty but for what must be there; the rest is what set_account does anyway.
    check_name("user", fields.name.value_or(""));
    run(database_, "INSERT INTO accounts VALUES (?, '', ?, 0, '', '', '', '')", new_id,
        group_id(group));
    set_account(new_id, fields);
    return new_id;
}

void Store::set_name(std::int64_t id, const std::string& name)
{
    check_name("user", name);
    SQLite::Statement others(database_, "SELECT 1 FROM accounts WHERE name = ? AND id <> ?");
    SQLite::bind(others, name, id);
    if (others.executeStep() || is_taken(paths_.passwd, name))
        throw Refusal("User " + name + " already exists");
    run(database_,
        "UPDATE cloud_owner SET name = ?1"
        " WHERE name <> '' AND name = (SELECT name FROM accounts WHERE id = ?2)",
        name, id);
    set_column(id, "name", name);
}

void Store::set_column(std::int64_t id, const char* column, const std::string& value)
{
    check_text(column, value);
    run(database_, (std::string("UPDATE accounts SET ") + column + " = ? WHERE id = ?").c_str(),
        value, id);
}

void Store::set_account(std::int64_t id, const AccountFields& fields)
{
    if (!exists(database_, "SELECT 1 FROM accounts WHERE id = ?", std::to_string(id)))
        throw Refusal("No user with id " + std::to_string(id));
    if (fields.name)
        set_name(id, *fields.name);
    if (fields.group)
        run(database_, "UPDATE accounts SET group_id = ? WHERE id = ?", group_id(*fields.group),
            id);
    if (fields.locked)
        run(database_, "UPDATE accounts SET locked = ? WHERE id = ?", *fields.locked ? 1 : 0, id);
    if (fields.email)
        set_column(id, "email", *fields.email);
    if (fields.smb_hash)
        set_column(id, "smb_hash", *fields.smb_hash);
    if (fields.sys_hash)
        set_column(id, "sys_hash", *fields.sys_hash);
    if (fields.p2p_user_name)
        set_column(id, "p2p_user_name", *fields.p2p_user_name);
}

void Store::delete_account(std::int64_t id)
{
    run(database_, "DELETE FROM accounts WHERE id = ?", id);
    if (database_.getChanges() == 0)
        throw Refusal("No user with id " + std::to_string(id));
}

void Store::add_membership(std::int64_t account, const std::string& group)
{
    run(database_, "INSERT OR IGNORE INTO memberships VALUES (?, ?)", account, group_id(group));
}

void Store::add_group(const std::string& name, std::optional<std::int64_t> id)
{
    check_name("group", name);
    if (exists(database_, "SELECT 1 FROM groups WHERE name = ?", name) ||
        is_taken(paths_.group, name))
        throw Refusal("Group " + name + " already exists");
    run(database_, "INSERT INTO groups VALUES (?, ?)", choose_id(database_, id, NEXT_GROUP_ID),
        name);
}

void Store::add_remote_user(const RemoteUser& user)
{
    check_text("UserName", user.name);
    check_text("FullName", user.full_name);
    if (user.name.empty())
        throw Refusal("Invalid remote user name: it is empty");
    if (exists(database_, "SELECT 1 FROM remote_users WHERE name = ?", user.name))
        throw Refusal("User already present");
    run(database_, "INSERT INTO remote_users VALUES (?, ?)", user.name, user.full_name);
}

void Store::delete_remote_user(const std::string& name)
{
    run(database_, "DELETE FROM remote_users WHERE name = ?", name);
    if (database_.getChanges() == 0)
        throw Refusal("No remote user " + name);
}

void Store::set_cloud_owner(const std::string& name)
{
    check_text("The cloud owner's name", name);
    database_.exec("DELETE FROM cloud_owner");
    if (!name.empty())
        run(database_, "INSERT INTO cloud_owner VALUES (?)", name);
}

void Store::clear()
{
    database_.exec("DELETE FROM accounts; DELETE FROM groups; DELETE FROM remote_users;"
                   "DELETE FROM cloud_owner; DELETE FROM orders; DELETE FROM sqlite_sequence");
}

std::vector<Account> Store::find_accounts(Property property, Match match, const std::string& value)
{
    const std::string column = property == Property::UserName ? "a.name" : "a.email";
    const std::string condition =
        match == Match::Equal ? column + " = ?" : "instr(lower(" + column + "), lower(?)) > 0";
    SQLite::Statement row(
        database_, "SELECT a.id, a.name, g.name, locked, email, smb_hash, sys_hash, p2p_user_name"
                   " FROM accounts a JOIN groups g ON g.id = group_id WHERE " +
                       condition + " ORDER BY a.name"
    );
    SQLite::Statement membership(
        database_, "SELECT name FROM memberships JOIN groups ON id = group_id"
                   " WHERE account_id = ? ORDER BY name"
    );
    SQLite::bind(row, value);
    std::vector<Account> found;
    while (row.executeStep()) {
        found.push_back(
            {row.getColumn(0).getInt64(),
             row.getColumn(1),
             row.getColumn(2),
             row.getColumn(3).getInt() != 0,
             row.getColumn(4),
             row.getColumn(5),
             row.getColumn(6),
             row.getColumn(7),
             {}}
        );
        for (SQLite::bind(membership, found.back().id); membership.executeStep();)
            found.back().member_of.push_back(membership.getColumn(0));
        membership.reset();
    }
    return found;
}

std::vector<Account> Store::accounts()
{
    return find_accounts(Property::UserName, Match::Like, "");
}

std::vector<Group> Store::groups()
{
    SQLite::Statement row(database_, "SELECT id, name FROM groups ORDER BY id");
    std::vector<Group> found;
    while (row.executeStep())
        found.push_back({row.getColumn(0).getInt64(), row.getColumn(1)});
    return found;
}

std::vector<RemoteUser> Store::remote_users()
{
    SQLite::Statement row(database_, "SELECT name, full_name FROM remote_users ORDER BY name");
    std::vector<RemoteUser> found;
    while (row.executeStep())
        found.push_back({row.getColumn(0), row.getColumn(1)});
    return found;
}

std::string Store::cloud_owner()
{
    SQLite::Statement row(database_, "SELECT name FROM cloud_owner");
    return row.executeStep() ? row.getColumn(0).getString() : "";
}
