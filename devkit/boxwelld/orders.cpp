#include "devkit/boxwelld/orders.h"

#include "devkit/boxwelld/sql.h"

#include <SQLiteCpp/Transaction.h>

void place_order(Store& store, const Order& order, int skip, int count)
{
    execute(
        store.database(), "INSERT INTO orders (kind, text, skip, count) VALUES (?, ?, ?, ?)",
        order.kind, order.text, skip, count
    );
}

std::optional<Order> take_order(Store& store)
{
    SQLite::Database& database = store.database();
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    std::optional<Order> order;
    SQLite::Statement row(
        database, "SELECT id, kind, text FROM orders WHERE skip = 0 ORDER BY id LIMIT 1"
    );
    std::int64_t id = 0;
    if (row.executeStep()) {
        id = row.getColumn(0).getInt64();
        order = Order{row.getColumn(1), row.getColumn(2)};
    }
    row.reset();
    // A count of 1 is used up, a count of 0 never is.
    execute(database, "DELETE FROM orders WHERE id = ? AND count = 1", id);
    execute(database, "UPDATE orders SET count = count - 1 WHERE id = ? AND count > 1", id);
    database.exec("UPDATE orders SET skip = skip - 1 WHERE skip > 0");
    transaction.commit();
    return order;
}

std::vector<WaitingOrder> waiting_orders(Store& store)
{
    SQLite::Statement row(
        store.database(), "SELECT kind, text, skip, count FROM orders ORDER BY id"
    );
    std::vector<WaitingOrder> orders;
    while (row.executeStep()) {
        orders.push_back(
            {{row.getColumn(0), row.getColumn(1)},
             row.getColumn(2).getInt(),
             row.getColumn(3).getInt()}
        );
    }
    return orders;
}

void clear_orders(Store& store)
{
    store.database().exec("DELETE FROM orders");
}
