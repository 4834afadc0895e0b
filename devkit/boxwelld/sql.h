/** Short forms for statements with bound values. */
#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/VariadicBind.h>

#include <string>

/** Executes a statement that gives no rows; the result is the number of rows changed. */
template<class... Values>
int execute(SQLite::Database& database, const std::string& sql, const Values&... values)
{
    SQLite::Statement statement(database, sql);
    SQLite::bind(statement, values...);
    return statement.exec();
}

/** Whether the query gives a row. */
template<class... Values>
bool exists(SQLite::Database& database, const std::string& sql, const Values&... values)
{
    SQLite::Statement statement(database, sql);
    SQLite::bind(statement, values...);
    return statement.executeStep();
}
