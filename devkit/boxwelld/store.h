/**
 * The daemon's state in SQLite: groups, accounts, remote users, the cloud owner. What contradicts
 * the state is thrown as a Refusal, a failing database or file as another std::exception.
 */
#pragma once

#include "devkit/boxwelld/account.h"
#include "devkit/boxwelld/files.h"
#include "devkit/boxwelld/section_file.h"
#include "devkit/boxwelld/sql.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

enum class Property {
    UserName,
    EmailAddress,
};
enum class Match {
    Equal, // byte for byte
    Like,  // contained, whatever the case of ASCII letters
};

class Store {
  public:
    /** Opens the state, and makes it where there is none. */
    explicit Store(const Paths& paths);

    /**
     * Runs `work` as one transaction, then brings passwd and group in step. If any of that fails,
     * nothing has changed, and the failure is thrown on.
     */
    void change(const std::function<void()>& work);

    // Within change():
    /** Adds an account, which needs a name and a group; the result is its id. */
    std::int64_t add_account(const AccountFields& fields, std::optional<std::int64_t> id = {});
    void set_account(std::int64_t id, const AccountFields& fields);
    void delete_account(std::int64_t id);
    void add_membership(std::int64_t account, const std::string& group);
    void add_group(const std::string& name, std::optional<std::int64_t> id);
    void add_remote_user(const RemoteUser& user);
    void delete_remote_user(const std::string& name);
    /** The empty name: none. */
    void set_cloud_owner(const std::string& name);
    /** Removes everything, orders and plan included. */
    void clear();

    // In any case; sorted by name, groups by id:
    std::vector<Account> accounts();
    std::vector<Account> find_accounts(Property property, Match match, const std::string& value);
    std::vector<Group> groups();
    std::vector<RemoteUser> remote_users();
    std::string cloud_owner();

    Connection& database() { return database_; }

  private:
    /** Reads passwd and group where another than this object may have changed them. */
    void read_account_files();
    void write_account_files();
    void replace_account_files();
    /** Whether the lines of what was touched could be set. */
    bool write_touched();
    std::string passwd_line(std::int64_t id);
    std::string group_line(std::int64_t id);
    /** The account's name changes: its line does, and those of the groups that it is in. */
    void touch(std::int64_t account);
    /** The id that is asked for, or what the query `next` gives; passwd must be able to hold it. */
    std::int64_t choose_id(const std::optional<std::int64_t>& wanted, const char* next);
    std::int64_t group_id(const std::string& name);
    /** A Refusal where the name is none, or another's than the account's with this id. */
    void expect_free(const std::string& name, std::int64_t id);

    Connection database_;
    SectionFile passwd_;
    SectionFile group_;
    std::int64_t version_ = -1; // the database's, as other processes change it
    bool replace_files_ = true; // what was touched is not all that may differ
    std::set<std::int64_t> touched_accounts_;
    std::set<std::int64_t> touched_groups_;
};
