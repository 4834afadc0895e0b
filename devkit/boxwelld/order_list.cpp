#include "devkit/boxwelld/order_list.h"

#include "devkit/boxwelld/orders.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t LONGEST = 60; // of a text, in bytes

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

/** "the next 2 requests, behind 1 other". */
std::string turn_of(const WaitingOrder& waiting)
{
    if (waiting.skip == 0) {
        return requests(waiting);
    }
    return requests(waiting) + ", behind " + std::to_string(waiting.skip) +
           (waiting.skip == 1 ? " other" : " others");
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
    return {{"orders", list}};
}

std::string for_people(const std::vector<WaitingOrder>& orders)
{
    std::string text = "orders\n";
    for (const WaitingOrder& waiting : orders) {
        text += "  " + turn_of(waiting) + ": " + shortened(waiting.order.to_string()) + '\n';
    }
    return text + (orders.empty() ? "  (none)\n" : "");
}

} // namespace

std::string order_list(Store& store, bool json)
{
    const std::vector<WaitingOrder> orders = waiting_orders(store);
    return json ? as_json(orders).dump(2, ' ', false, Json::error_handler_t::replace) + '\n'
                : for_people(orders);
}
