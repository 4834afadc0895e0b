// What comes between two commands.
#include "tools/soak/clock.h"
#include "tools/soak/soak.h"
#include "tools/soak/texts.h"

#include <filesystem>
#include <fstream>

namespace {

constexpr time_t DAY = 86400;
/** Commands before the daemon is killed less often: it is to live long, too. */
constexpr std::uint32_t YOUTH = 1000;

void write_text(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::trunc) << text;
}

bool is_account(const State& state, const std::string& name)
{
    for (const auto& [id, account] : state.accounts) {
        if (account.name == name) {
            return true;
        }
    }
    return false;
}

} // namespace

void Soak::disturb(Random& random, std::uint32_t number)
{
    world_.now += static_cast<time_t>(random.below(3));
    if (disk_.is_full() && random.percent(10)) {
        disk_.free();
    }
    const std::uint64_t what = random.below(1000);
    const std::string owner = between(state_.owner_file.value_or(""), "<owner>", "</owner>");
    if (disk_.is_full()) {
        note("with a full disk");
    } else if (what < 80) {
        place_an_order(random, number);
    } else if (what < 180) {
        change_an_account(random);
    } else if (what < 200) {
        step_clock(random);
    } else if (what < 220) {
        toggle_log_file();
    } else if (what < 223 || (!world_.informed && what < 300)) {
        toggle_information();
    } else if (what < 226 && privileged_) {
        fill_disk();
    } else if (what < 240) {
        share_memory(random);
    } else if (what < 280) {
        clear_upgrade_flag();
    } else if (what < 380 && !is_account(state_, owner)) {
        register_anew(random);
    }
    plugin_time = world_.now;
}

void Soak::place_an_order(Random& random, std::uint32_t number)
{
    static const Order ORDERS[] = {
        {"refuse", "Disk is full"},
        {"refuse", "User already present"},
        {"refuse-bare", ""},
        {"cut", "0"},
        {"cut", "150"},
        {"no-reply", ""},
        {"fail", ""},
        {"die", ""}};
    const Order& order = random.of(ORDERS);
    if (order.kind == "die" && number > YOUTH && !random.once_in(100)) {
        return;
    }
    const int skip = static_cast<int>(random.below(5));
    const int count = order.kind == "die" ? 1 : 1 + static_cast<int>(random.below(3));
    place_order(store_, order, skip, count);
    world_.orders.push_back({order, skip, count});
    note(
        "order " + order.kind,
        order.text + " skip " + std::to_string(skip) + " count " + std::to_string(count)
    );
}

void Soak::forget_orders()
{
    clear_orders(store_);
    world_.orders.clear();
}

/** As the device's administrator does. */
void Soak::change_an_account(Random& random)
{
    if (state_.accounts.empty()) {
        return;
    }
    const std::int64_t id = random.of(state_.accounts).first;
    const bool locked = random.percent(25);
    AccountFields fields;
    fields.locked = locked;
    store_.change([&] { store_.set_account(id, fields); });
    state_.accounts[id].locked = locked;
    note(locked ? "lock" : "unlock", std::to_string(id));
}

/** As the cloud does for a device that nobody owns. */
void Soak::register_anew(Random& random)
{
    if (state_.accounts.empty()) {
        return;
    }
    const std::string owner = random.of(state_.accounts).second.name;
    state_.owner_file = owner_text(world_, owner, owner + "-p2p");
    state_.cloud_owner = owner;
    write_text(OWNER_FILE_PATH, *state_.owner_file);
    store_.change([&] { store_.set_cloud_owner(owner); });
    note("register", shown(owner));
}

/** Back and forth, or to where a record's day ends. */
void Soak::step_clock(Random& random)
{
    static constexpr time_t STEPS[] = {3600, 3 * DAY, -3600, -DAY};
    time_t by = random.of(STEPS);
    if (!state_.sessions.empty() && random.percent(50)) {
        const time_t end = random.of(state_.sessions).second.written + DAY;
        by = end + static_cast<time_t>(random.below(2)) - world_.now;
    }
    world_.now += by;
    note(by > 0 ? "clock forward" : "clock back", std::to_string(by));
}

void Soak::toggle_log_file()
{
    if (state_.log_file) {
        std::filesystem::remove(LOG_FILE_PATH);
    } else {
        write_text(LOG_FILE_PATH, "");
    }
    state_.log_file = !state_.log_file;
    note(state_.log_file ? "log file brought back" : "log file removed");
}

void Soak::toggle_information()
{
    static const std::string SERIAL = read_text(SERIAL_PATH);
    write_text(SERIAL_PATH, world_.informed ? "ERROR: busy\n" : SERIAL);
    world_.informed = !world_.informed;
    note(world_.informed ? "information back" : "information lost");
}

void Soak::fill_disk()
{
    forget_orders();
    note(disk_.fill() ? "disk filled" : "disk cannot be filled");
}

/** As who has dealt with it does. */
void Soak::clear_upgrade_flag()
{
    std::filesystem::remove(UPGRADE_FLAG_PATH);
    state_.upgraded = false;
    note("flag removed");
}

/** As the session's other end does. */
void Soak::share_memory(Random& random)
{
    if (state_.sessions.empty()) {
        return;
    }
    const std::string token = random.of(state_.sessions).first;
    write_text("/dev/shm/" + token, "");
    state_.shared.insert(token);
    note("shared memory made", shown(token));
}
