#include "devkit/boxwelld/order_list.h"

#include "devkit/boxwelld/chaos.h"
#include "devkit/boxwelld/orders.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t LONGEST = 60;     // of a text, in bytes
constexpr std::size_t MOST_FAULTS = 10; // of a plan that are told
constexpr std::int64_t FARTHEST = 1000; // requests from now among which they are looked for

/** The beginning of a long text, on one line; characters stay whole. */
std::string shortened(const std::string& text)
{
    std::size_t end = LONGEST;
    if (text.size() <= end) {
        return one_line(text);
    }
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return one_line(text.substr(0, end)) + "…";
}

/** "every request", "the next 2 requests that hold \"<xs:add\"", as far as `count` goes. */
std::string requests(const WaitingOrder& waiting)
{
    const bool many = waiting.count > 1;
    std::string text = waiting.count == 0 ? "every request"
                       : many ? "the next " + std::to_string(waiting.count) + " requests"
                              : "the next request";
    if (!waiting.holds.empty()) {
        text += (many ? " that hold \"" : " that holds \"") + shortened(waiting.holds) + '"';
    }
    return text;
}

std::string behind(std::int64_t others)
{
    return others == 0
               ? ""
               : ", behind " + std::to_string(others) + (others == 1 ? " other" : " others");
}

/** The next faults of the plan. */
std::vector<Order> faults_of(const Chaos& chaos)
{
    std::vector<Order> faults;
    const std::int64_t last = chaos.come + FARTHEST;
    for (auto number = chaos.come + 1; number <= last && faults.size() < MOST_FAULTS; ++number) {
        if (const auto fault = planned(chaos, number)) {
            faults.push_back(*fault);
        }
    }
    return faults;
}

Json as_json(const std::vector<WaitingOrder>& orders)
{
    Json list = Json::array();
    for (const WaitingOrder& waiting : orders) {
        list.push_back(
            {{"kind", waiting.order.kind},
             {"text", waiting.order.text},
             {"for", waiting.holds},
             {"skip", waiting.skip},
             {"count", waiting.count}}
        );
    }
    return list;
}

Json as_json(const std::optional<Chaos>& chaos)
{
    if (!chaos) {
        return {};
    }
    Json faults = Json::array();
    for (const Order& fault : faults_of(*chaos)) {
        faults.push_back({{"request", fault.chaos}, {"kind", fault.kind}, {"text", fault.text}});
    }
    return {{"seed", chaos->seed},   {"rate", chaos->rate}, {"kinds", chaos->kinds},
            {"count", chaos->count}, {"come", chaos->come}, {"faults", faults}};
}

std::string for_people(const std::vector<WaitingOrder>& orders)
{
    std::string text = "orders\n";
    for (const WaitingOrder& waiting : orders) {
        text += "  " + requests(waiting) + behind(waiting.skip) + ": " +
                shortened(waiting.order.to_string()) + '\n';
    }
    return text + (orders.empty() ? "  (none)\n" : "");
}

std::string for_people(const std::optional<Chaos>& chaos)
{
    if (!chaos) {
        return "chaos\n  (off)\n";
    }
    std::string kinds;
    for (const std::string& kind : chaos->kinds) {
        kinds += (kinds.empty() ? "" : ", ") + kind;
    }
    const std::string of = chaos->count > 0 ? " of " + std::to_string(chaos->count) : "";
    std::string text = "chaos\n  seed " + std::to_string(chaos->seed) + ", " +
                       std::to_string(chaos->rate) + " % of the requests: " + kinds + "\n  " +
                       std::to_string(chaos->come) + of + " requests have come\n";
    for (const Order& fault : faults_of(*chaos)) {
        text += "  request " + std::to_string(fault.chaos) + behind(fault.chaos - chaos->come - 1) +
                ": " + fault.kind + (fault.text.empty() ? "" : ' ' + fault.text) + '\n';
    }
    return text;
}

} // namespace

std::string order_list(Store& store, bool json)
{
    const std::vector<WaitingOrder> orders = waiting_orders(store);
    const std::optional<Chaos> chaos = present_chaos(store);
    if (!json) {
        return for_people(orders) + for_people(chaos);
    }
    const Json list = {{"orders", as_json(orders)}, {"chaos", as_json(chaos)}};
    return list.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}
