/** Ordered replies: what the daemon is to do with requests to come, kept in its state. */
#pragma once

#include "devkit/boxwelld/store.h"

#include <optional>
#include <string>
#include <vector>

struct Order {
    std::string kind;
    std::string text;
    std::int64_t chaos = 0; // number of the request in the plan that has it; 0: ordered by hand

    /** As the transcript tells it. */
    std::string to_string() const;
};

/** An order whose turn is still to come, or that is not used up. */
struct WaitingOrder {
    Order order;
    int skip = 0;
    int count = 1;
    std::string holds; // what a request must hold to be counted at all; empty: anything
};

/**
 * Puts an order behind those that wait.
 *
 * @param skip   requests that pass before it counts
 * @param count  requests that it counts for; 0: all
 * @param holds  both count only requests that hold this text, byte for byte
 */
void place_order(
    Store& store, const Order& order, int skip, int count, const std::string& holds = ""
);

/**
 * The order for the request that has just come, if there is one: the first whose turn it is, or
 * else what a plan has for it (chaos.h).
 */
std::optional<Order> take_order(Store& store, const std::string& request);

/** The orders that wait, in the order of giving. */
std::vector<WaitingOrder> waiting_orders(Store& store);

void clear_orders(Store& store);
