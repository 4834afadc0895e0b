#include "devkit/boxwelld/orders.h"

#include "devkit/boxwelld/chaos.h"
#include "devkit/boxwelld/stages.h"

#include <SQLiteCpp/Transaction.h>

namespace {

struct Row {
    std::int64_t id;
    WaitingOrder waiting;
};

std::vector<Row> rows(Connection& database)
{
    BoundStatement row(
        database, "SELECT id, kind, text, skip, count, holds FROM orders ORDER BY id"
    );
    std::vector<Row> found;
    while (row->executeStep()) {
        found.push_back(
            {row->getColumn(0).getInt64(),
             {{row->getColumn(1), row->getColumn(2), 0},
              row->getColumn(3).getInt(),
              row->getColumn(4).getInt(),
              row->getColumn(5)}}
        );
    }
    return found;
}

/** The row after one more request has passed or taken it. */
void count_down(Connection& database, const Row& row)
{
    if (row.waiting.skip > 0) {
        execute(database, "UPDATE orders SET skip = skip - 1 WHERE id = ?", row.id);
    } else if (row.waiting.count == 1) {
        execute(database, "DELETE FROM orders WHERE id = ?", row.id);
    } else if (row.waiting.count > 1) { // 0 is never used up
        execute(database, "UPDATE orders SET count = count - 1 WHERE id = ?", row.id);
    }
}

} // namespace

std::string Order::to_string() const
{
    const std::string by = chaos > 0 ? "chaos " + std::to_string(chaos) + ": " : "";
    return by + (text.empty() ? kind : kind + ' ' + text);
}

void place_order(Store& store, const Order& order, int skip, int count, const std::string& holds)
{
    execute(
        store.database(),
        "INSERT INTO orders (kind, text, skip, count, holds) VALUES (?, ?, ?, ?, ?)", order.kind,
        order.text, skip, count, holds
    );
}

std::optional<Order> take_order(Store& store, const std::string& request)
{
    const Timed timed(Stage::Database);
    Connection& database = store.database();
    if (!exists(database, "SELECT 1 FROM orders UNION ALL SELECT 1 FROM chaos")) {
        return std::nullopt;
    }
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    std::optional<Order> order;
    for (const Row& row : rows(database)) {
        const bool waits = row.waiting.skip > 0;
        if (request.find(row.waiting.holds) == std::string::npos || (!waits && order)) {
            continue;
        }
        if (!waits) {
            order = row.waiting.order;
        }
        count_down(database, row);
    }
    const std::optional<Order> by_plan = take_chaos(store);
    transaction.commit();
    return order ? order : by_plan;
}

std::vector<WaitingOrder> waiting_orders(Store& store)
{
    std::vector<WaitingOrder> orders;
    for (Row& row : rows(store.database())) {
        orders.push_back(std::move(row.waiting));
    }
    return orders;
}

void clear_orders(Store& store)
{
    store.database().exec("DELETE FROM orders");
}
