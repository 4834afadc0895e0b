#include "devkit/boxwelld/chaos.h"

#include <SQLiteCpp/Transaction.h>

#include <algorithm>
#include <iterator>
#include <sstream>

namespace {

constexpr const char* KINDS[] = {"refuse", "refuse-bare", "no-reply", "cut",
                                 "delay",  "hang",        "fail",     "die"};
constexpr const char* REFUSALS[] = {
    "Disk is full", "Database is locked", "Out of memory", "Try again later"};
constexpr std::uint64_t MOST_BYTES_KEPT = 600; // about a reply with a record
constexpr std::uint64_t LONGEST_DELAY_MS = 500;

/** Numbers that a seed and a step decide: SplitMix64, whose state begins at both. */
class Numbers {
  public:
    Numbers(std::uint32_t seed, std::uint64_t step) : state_((std::uint64_t{seed} << 32U) ^ step)
    {
        state_ = next(); // neighbours part
    }

    /** 0 to `count` - 1. */
    std::uint64_t below(std::uint64_t count) { return next() % count; }

  private:
    std::uint64_t next()
    {
        std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15U;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    std::uint64_t state_;
};

/** The text of an order, drawn where its kind takes one. */
std::string text_for(const std::string& kind, std::uint64_t drawn)
{
    if (kind == "refuse") {
        return REFUSALS[drawn % std::size(REFUSALS)];
    }
    if (kind == "cut") {
        return std::to_string(drawn % MOST_BYTES_KEPT);
    }
    return kind == "delay" ? std::to_string(1 + drawn % LONGEST_DELAY_MS) : "";
}

std::string joined(const std::vector<std::string>& kinds)
{
    std::string list;
    for (const std::string& kind : kinds) {
        list += (list.empty() ? "" : ",") + kind;
    }
    return list;
}

} // namespace

std::vector<std::string> chaos_kinds(const std::string& list)
{
    const std::vector<std::string> known(std::begin(KINDS), std::end(KINDS));
    std::vector<std::string> named;
    std::istringstream names(list + ','); // a name that is empty is seen as one
    for (std::string name; std::getline(names, name, ',');) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            throw Refusal("unknown kind \"" + name + "\": there are " + joined(known));
        }
        named.push_back(name);
    }
    std::vector<std::string> kinds;
    std::copy_if(known.begin(), known.end(), std::back_inserter(kinds), [&](const auto& kind) {
        return std::find(named.begin(), named.end(), kind) != named.end();
    });
    return kinds;
}

std::optional<Order> planned(const Chaos& chaos, std::int64_t number)
{
    if (chaos.count > 0 && number > chaos.count) {
        return std::nullopt;
    }
    Numbers numbers(chaos.seed, static_cast<std::uint64_t>(number));
    if (numbers.below(GREATEST_RATE) >= static_cast<std::uint64_t>(chaos.rate)) {
        return std::nullopt;
    }
    const std::string& kind =
        chaos.kinds[static_cast<std::size_t>(numbers.below(chaos.kinds.size()))];
    return Order{kind, text_for(kind, numbers.below(UINT32_MAX)), number};
}

void begin_chaos(Store& store, const Chaos& chaos)
{
    SQLite::Transaction transaction(store.database(), SQLite::TransactionBehavior::IMMEDIATE);
    end_chaos(store);
    execute(
        store.database(), "INSERT INTO chaos (seed, rate, kinds, count) VALUES (?, ?, ?, ?)",
        std::int64_t{chaos.seed}, chaos.rate, joined(chaos.kinds), chaos.count
    );
    transaction.commit();
}

void end_chaos(Store& store)
{
    store.database().exec("DELETE FROM chaos");
}

std::optional<Chaos> present_chaos(Store& store)
{
    BoundStatement row(store.database(), "SELECT seed, rate, kinds, count, come FROM chaos");
    if (!row->executeStep()) {
        return std::nullopt;
    }
    return Chaos{
        row->getColumn(0).getUInt(), row->getColumn(1).getInt(), chaos_kinds(row->getColumn(2)),
        row->getColumn(3).getInt(), row->getColumn(4).getInt64()};
}

std::optional<Order> take_chaos(Store& store)
{
    const std::optional<Chaos> chaos = present_chaos(store);
    if (!chaos) {
        return std::nullopt;
    }
    store.database().exec("UPDATE chaos SET come = come + 1");
    return planned(*chaos, chaos->come + 1);
}
