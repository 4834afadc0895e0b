/** The management daemon, as the contract has it: one request a call, with the orders that it has.
 */
#pragma once

#include "tools/soak/fate.h"
#include "tools/soak/state.h"
#include "tools/soak/world.h"

#include <functional>

/** What the plug-in makes of the answer. */
enum class Outcome {
    Done,
    Refused, // in `detail`'s words, or by an answer that says nothing
    Failed,
};

class DaemonModel {
  public:
    DaemonModel(State& state, World& world, Fate& fate) : state_(state), world_(world), fate_(fate)
    {
    }

    /** The account, where the daemon says so. */
    std::optional<std::int64_t> find(const std::string& name);
    Outcome add(const Account& account);
    /** Sets what `fields` holds; `well_formed`: so is the rest of the request. */
    Outcome set(std::int64_t id, const AccountFields& fields, bool well_formed);
    Outcome remove(std::int64_t id);
    Outcome add_remote_user(const std::string& name);
    Outcome remove_remote_user(const std::string& name);
    Outcome release_owner();

    std::optional<std::int64_t> id_of(const std::string& name) const;
    std::string detail; // the daemon's words, when it refused the last request

  private:
    std::optional<PlacedOrder> take_order();
    /** `change` is null when the daemon cannot carry it out, and says why. */
    Outcome request(const std::function<void()>& change, const char* refusal = "");
    bool is_free(const std::string& name, std::int64_t own_id) const;

    State& state_;
    World& world_;
    Fate& fate_;
};
