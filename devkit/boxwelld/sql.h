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
    friend class BoundStatement;
    std::unordered_map<std::string, SQLite::Statement> statements_; // by their texts
};

/** The use of a statement, which nobody uses meanwhile; it is prepared once a connection. Values
 * are bound anew. */
class BoundStatement {
  public:
    template<class... Values>
    BoundStatement(Connection& database, const std::string& sql, const Values&... values)
        : statement_(database.statements_.try_emplace(sql, database, sql).first->second)
    {
        statement_.clearBindings();
        if constexpr (sizeof...(values) > 0) {
            SQLite::bind(statement_, values...);
        }
    }
    BoundStatement(const BoundStatement&) = delete;
    BoundStatement& operator=(const BoundStatement&) = delete;
    ~BoundStatement() { statement_.tryReset(); } // what failed has been thrown
    SQLite::Statement* operator->() { return &statement_; }

  private:
    SQLite::Statement& statement_;
};

/** Executes a statement that gives no rows; the result is the number of rows changed. */
template<class... Values>
int execute(Connection& database, const std::string& sql, const Values&... values)
{
    return BoundStatement(database, sql, values...)->exec();
}

/** Whether the query gives a row. */
template<class... Values>
bool exists(Connection& database, const std::string& sql, const Values&... values)
{
    return BoundStatement(database, sql, values...)->executeStep();
}
