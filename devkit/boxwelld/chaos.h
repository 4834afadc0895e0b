/**
 * Faults by a seeded plan: what becomes of the requests to come follows from the seed and a
 * request's number alone, whatever the machine and the time. Requests count from 1 on since the
 * plan began, those that an order by hand meets among them.
 */
#pragma once

#include "devkit/boxwelld/orders.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** Of the requests, in percent. */
constexpr int LEAST_RATE = 1;
constexpr int GREATEST_RATE = 100;

struct Chaos {
    std::uint32_t seed = 0;
    int rate = LEAST_RATE;
    std::vector<std::string> kinds; // as chaos_kinds() gives them
    int count = 0;                  // requests that the plan is for; 0: all
    std::int64_t come = 0;          // requests that have come
};

/**
 * The kinds that a list names, separated by commas, each once and in an order of their own, so that
 * the order of writing does not change the plan.
 *
 * @throw Refusal  a name is not one of those that the text then tells
 */
std::vector<std::string> chaos_kinds(const std::string& list);

/** The kinds where none are named. */
constexpr char DEFAULT_CHAOS_KINDS[] = "refuse,cut,delay,fail,die";

/** What the plan has for the request of this number; nothing: it is carried out as ever. */
std::optional<Order> planned(const Chaos& chaos, std::int64_t number);

/** Begins a plan, in place of one that there may be. */
void begin_chaos(Store& store, const Chaos& chaos);
void end_chaos(Store& store);
std::optional<Chaos> present_chaos(Store& store);

/** Counts a request that has come; what the plan has for it. */
std::optional<Order> take_chaos(Store& store);
