#include "devkit/boxwelld/store.h"

#include "devkit/boxwelld/account_checks.h"
#include "devkit/boxwelld/sql.h"

#include <SQLiteCpp/Transaction.h>
#include <sys/stat.h>

#include <cerrno>
#include <limits>

namespace {

// How long one process waits for another's transaction.
constexpr int BUSY_MS = 10000;

constexpr char SCHEMA[] = R"(
PRAGMA foreign_keys = ON;
PRAGMA synchronous = OFF; -- the desk loses nothing that matters with its power
CREATE TABLE IF NOT EXISTS groups (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);
CREATE TABLE IF NOT EXISTS accounts (
    id INTEGER PRIMARY KEY AUTOINCREMENT, -- an id never comes back
    name TEXT NOT NULL UNIQUE,
    group_id INTEGER NOT NULL REFERENCES groups,
    locked INTEGER NOT NULL DEFAULT 0,
    email TEXT NOT NULL DEFAULT '',
    smb_hash TEXT NOT NULL DEFAULT '',
    sys_hash TEXT NOT NULL DEFAULT '',
    p2p_user_name TEXT NOT NULL DEFAULT '');
CREATE TABLE IF NOT EXISTS memberships (
    account_id INTEGER NOT NULL REFERENCES accounts ON DELETE CASCADE,
    group_id INTEGER NOT NULL REFERENCES groups,
    PRIMARY KEY (account_id, group_id));
CREATE INDEX IF NOT EXISTS memberships_by_group ON memberships (group_id);
CREATE TABLE IF NOT EXISTS remote_users (name TEXT PRIMARY KEY, full_name TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS cloud_owner (name TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS orders (
    id INTEGER PRIMARY KEY, kind TEXT NOT NULL, text TEXT NOT NULL,
    skip INTEGER NOT NULL, count INTEGER NOT NULL, holds TEXT NOT NULL DEFAULT '');
CREATE TABLE IF NOT EXISTS chaos ( -- one row, or none
    seed INTEGER NOT NULL, rate INTEGER NOT NULL, kinds TEXT NOT NULL, count INTEGER NOT NULL,
    come INTEGER NOT NULL DEFAULT 0);
)";

/** States that were made before a column was. */
void add_missing_columns(Connection& database)
{
    constexpr char HAS_HOLDS[] = "SELECT 1 FROM pragma_table_info('orders') WHERE name = 'holds'";
    if (exists(database, HAS_HOLDS)) {
        return;
    }
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    if (!exists(database, HAS_HOLDS)) { // another process may have been quicker
        database.exec("ALTER TABLE orders ADD COLUMN holds TEXT NOT NULL DEFAULT ''");
    }
    transaction.commit();
}

std::string make_state_folder(const Paths& paths)
{
    if (mkdir(paths.state.c_str(), 0755) != 0 && errno != EEXIST) {
        throw_errno(paths.state);
    }
    return paths.database();
}

} // namespace

Store::Store(const Paths& paths)
    : database_(make_state_folder(paths), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, BUSY_MS),
      passwd_(paths.passwd, paths.unfinished("passwd")),
      group_(paths.group, paths.unfinished("group"))
{
    database_.exec(SCHEMA);
    add_missing_columns(database_);
}

void Store::change(const std::function<void()>& work)
{
    bool files_touched = false;
    try {
        SQLite::Transaction transaction(database_, SQLite::TransactionBehavior::IMMEDIATE);
        read_account_files();
        work();
        files_touched = true;
        write_account_files();
        transaction.commit();
        replace_files_ = false;
    } catch (...) {
        try {
            if (files_touched) {
                const SQLite::Transaction alone(database_, SQLite::TransactionBehavior::IMMEDIATE);
                replace_account_files();
            }
        } catch (const std::exception&) { // the first failure is the one that tells
        }
        throw;
    }
}

std::int64_t Store::choose_id(const std::optional<std::int64_t>& wanted, const char* next)
{
    const std::int64_t id = wanted ? *wanted : database_.execAndGet(next).getInt64();
    if (id < 1 || id > std::numeric_limits<std::int32_t>::max()) {
        throw Refusal("Invalid id " + std::to_string(id));
    }
    return id;
}

void Store::add_group(const std::string& name, std::optional<std::int64_t> id)
{
    check_name("group", name);
    if (exists(database_, "SELECT 1 FROM groups WHERE name = ?", name) || group_.is_taken(name)) {
        throw Refusal("Group " + name + " already exists");
    }
    execute(
        database_, "INSERT INTO groups VALUES (?, ?)",
        choose_id(id, "SELECT coalesce(max(id), 1999) + 1 FROM groups"), name
    );
    replace_files_ = true;
}

std::vector<Group> Store::groups()
{
    BoundStatement row(database_, "SELECT id, name FROM groups ORDER BY id");
    std::vector<Group> found;
    while (row->executeStep()) {
        found.push_back({row->getColumn(0).getInt64(), row->getColumn(1)});
    }
    return found;
}

void Store::add_remote_user(const RemoteUser& user)
{
    check_text("UserName", user.name);
    check_text("FullName", user.full_name);
    if (user.name.empty()) {
        throw Refusal("Invalid remote user name: it is empty");
    }
    if (exists(database_, "SELECT 1 FROM remote_users WHERE name = ?", user.name)) {
        throw Refusal("User already present");
    }
    execute(database_, "INSERT INTO remote_users VALUES (?, ?)", user.name, user.full_name);
}

void Store::delete_remote_user(const std::string& name)
{
    if (execute(database_, "DELETE FROM remote_users WHERE name = ?", name) == 0) {
        throw Refusal("No remote user " + name);
    }
}

std::vector<RemoteUser> Store::remote_users()
{
    BoundStatement row(database_, "SELECT name, full_name FROM remote_users ORDER BY name");
    std::vector<RemoteUser> found;
    while (row->executeStep()) {
        found.push_back({row->getColumn(0), row->getColumn(1)});
    }
    return found;
}

void Store::set_cloud_owner(const std::string& name)
{
    check_text("The cloud owner's name", name);
    database_.exec("DELETE FROM cloud_owner");
    if (!name.empty()) {
        execute(database_, "INSERT INTO cloud_owner VALUES (?)", name);
    }
}

std::string Store::cloud_owner()
{
    BoundStatement row(database_, "SELECT name FROM cloud_owner");
    return row->executeStep() ? row->getColumn(0).getString() : "";
}

void Store::clear()
{
    database_.exec("DELETE FROM accounts; DELETE FROM groups; DELETE FROM remote_users;"
                   "DELETE FROM cloud_owner; DELETE FROM orders; DELETE FROM chaos; DELETE FROM "
                   "sqlite_sequence");
    replace_files_ = true;
}
