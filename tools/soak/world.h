/** What the model is told of the device, beside its state. */
#pragma once

#include "devkit/boxwelld/orders.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

struct PlacedOrder {
    Order order;
    int skip = 0;
    int count = 1; // at least one
};

struct World {
    time_t now = 1'000'000'000; // to the plug-in
    bool can_pin = false;       // the kernel lets us set the immutable attribute
    bool informed = true;       // the device information is complete
    std::string elements;       // the owner file's, from <model> to </link_agent_id>
    std::vector<Group> groups;
    std::map<std::string, std::int64_t> system_users;
    std::multiset<std::string> foreign_users; // lines of passwd and group that are not the daemon's
    std::multiset<std::string> foreign_groups;
    std::vector<PlacedOrder> orders; // to the daemon, which wait
    bool daemon_lives = true;
};
