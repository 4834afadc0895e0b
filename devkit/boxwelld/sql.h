/** A database whose statements stay prepared, and short forms for those with bound values. */
#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/VariadicBind.h>

#include <string>
#include <unordered_map>

class Connection : public SQLite::Database {
  public:
    using Database::Database;

  private:
    friend class Prepared;
    std::unordered_map<std::string, SQLite::Statement> statements_; // by their texts
};

/** The use of a statement, which nobody uses meanwhile; it is prepared once a connection. Values
 * are bound anew. */
class Prepared {
  public:
    template<class... Values>
    Prepared(Connection& database, const std::string& sql, const Values&... values)
        : statement_(database.statements_.try_emplace(sql, database, sql).first->second)
    {
        statement_.clearBindings();
        if constexpr (sizeof...(values) > 0) {
            SQLite::bind(statement_, values...);
        }
    }
    Prepared(const Prepared&) = delete;
    Prepared& operator=(const Prepared&) = delete;
    ~Prepared() { statement_.tryReset(); } // what failed has been thrown
    SQLite::Statement* operator->() { return &statement_; }

  private:
    SQLite::Statement& statement_;
};

/** Executes a statement that gives no rows; the result is the number of rows changed. */
template<class... Values>
int execute(Connection& database, const std::string& sql, const Values&... values)
{
    return Prepared(database, sql, values...)->exec();
}

/** Whether the query gives a row. */
template<class... Values>
bool exists(Connection& database, const std::string& sql, const Values&... values)
{
    return Prepared(database, sql, values...)->executeStep();
}
