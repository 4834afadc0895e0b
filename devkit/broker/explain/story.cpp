#include "devkit/broker/explain/story.h"

#include <algorithm>

namespace {

/** As many bytes of a name count, wherever it is told. */
constexpr std::size_t NAME_LENGTH = 31;

bool is_known(std::string_view operation)
{
    return std::find(OPERATIONS.begin(), OPERATIONS.end(), operation) != OPERATIONS.end();
}

bool same_name(std::string_view one, std::string_view other)
{
    return one.substr(0, NAME_LENGTH) == other.substr(0, NAME_LENGTH);
}

std::string first_value(const Said& said)
{
    return said.values.empty() ? "" : said.values.front().text;
}

/** Whether a handler's statement names the account of its command. */
bool names_account(const StatementRow& row)
{
    return row.function.ends_with("Handler") && !row.conversions.empty() &&
           row.format.find("Unregister") == std::string_view::npos &&
           row.format.find("failed resolving") == std::string_view::npos;
}

} // namespace

Story::Story(const Entry& first) : process_(first.process)
{
    for (const std::string_view operation : OPERATIONS) {
        phases_[operation] = REQUESTED;
    }
    add(first);
}

std::map<std::string_view, int> Story::phases_after(const Said& said) const
{
    std::map<std::string_view, int> after;
    for (const auto& [operation, phase] : phases_) {
        const auto next = phase_in(operation, *said.row);
        // Of an updateuser that is told from its beginning the handler's first statement is there.
        const bool too_early = operation == "updateuser" && phase == REQUESTED &&
                               tells_requester() && next && *next != BEGUN && *next != ENDED &&
                               *next != REQUESTED;
        // A deletion that failed tells of no success.
        const bool too_late = operation == "deleteuser" && !events_.empty() &&
                              events_.back().said.row->function == "DelUser" &&
                              end_by(*said.row) == End::Succeeded;
        if (next && !too_early && !too_late && (*next == ANYWHERE || *next >= phase)) {
            after[operation] = std::max(*next, phase);
        }
    }
    return after;
}

/** Whether a statement names the account of its command, and that is not this one's. */
bool Story::names_another(const Said& said) const
{
    const bool names_it = names_account(*said.row) || said.row->function == "AddUser" ||
                          (said.row->function == "GetUserData" && !may_be("updateuser"));
    const std::string name = names_account(*said.row) ? first_value(said) : said.value("username");
    return names_it && !name.empty() && !account_.empty() && !same_name(name, account_);
}

bool Story::knows(std::string_view name) const
{
    return !name.empty() &&
           (same_name(name, account_) || same_name(name, new_name_) || same_name(name, p2p_name_));
}

Likeness Story::likeness(const Entry& entry) const
{
    const auto names = [&entry](auto is_known) {
        const auto& values = entry.said.values;
        return std::any_of(values.begin(), values.end(), [is_known](const Value& value) {
            return value.label != "status" && is_known(value.text);
        });
    };
    return {
        names([this](const std::string& name) { return knows(name); }),
        entry.time == events_.back().time,
        names([this](const std::string& name) { return name == login_; })};
}

bool Story::takes(const Entry& entry) const
{
    const StatementRow& row = *entry.said.row;
    if (ended() || entry.process != process_ || tells_who_asks(row) || names_another(entry.said)) {
        return false;
    }
    if (row.function == "AuthenticateUser" || (row.function == "execute" && row.line != 0)) {
        const std::string login = entry.said.value("login");
        return !row.conversions.empty() && events_.size() == 1 && tells_requester() &&
               (login.empty() || login == login_);
    }
    if (row.function == "UpdateUser" && is_updated()) {
        return false;
    }
    const bool is_said = std::any_of(events_.begin(), events_.end(), [&row](const Event& event) {
        return event.said.row == &row;
    });
    const bool once = !may_repeat(row) || (row.level == "DEBUG" && !may_be("updateuser") &&
                                           row.format.find("GetID") != row.format.npos);
    return (!is_said || !once) && !phases_after(entry.said).empty();
}

void Story::add(const Entry& entry)
{
    if (auto after = phases_after(entry.said); !after.empty()) {
        phases_ = std::move(after);
    }
    events_.push_back({entry.said, entry.time});
    if (end_ == End::Open) {
        end_ = end_by(*entry.said.row);
    }
    learn(entry.said);
}

void Story::learn(const Said& said)
{
    if (tells_who_asks(*said.row) || end_ == End::Denied) {
        login_ = said.value("login");
        is_owner_ = said.value("is_owner");
        is_member_ = said.value("is_sh");
    }
    if (said.row->function == "execute" || said.row->function == "checkParameters") {
        asked_for_ = first_value(said);
    } else if (end_ == End::Denied) {
        asked_for_ = said.value("operation");
    }
    if (is_known(asked_for_) && may_be(asked_for_)) {
        phases_ = {{*std::find(OPERATIONS.begin(), OPERATIONS.end(), asked_for_), ENDED}};
        phases_.begin()->second = ended() ? ENDED : BEGUN;
    }
    for (const Value& value : said.values) {
        if (value.label == "status") {
            last_reply_ = value.text;
        } else if (value.label == "reason") {
            reason_ = value.text;
            reason_known_ = true;
        }
    }
    learn_names(said);
}

void Story::learn_names(const Said& said)
{
    const StatementRow& row = *said.row;
    if (row.function == "UpdateUser" && row.format.find("group=") != std::string_view::npos) {
        new_name_ = said.value("username");
        group_ = said.value("group");
        p2p_name_ = said.value("p2pusername");
        last_reply_.clear(); // of an account in the way
        if (is("upgradeusertosso") && account_.empty()) {
            account_ = p2p_name_; // which is the former name
        }
    } else if (names_account(row)) {
        account_ = account_.empty() ? first_value(said) : account_;
        new_name_ = row.conversions.size() == 2 && said.values.size() == 2 && new_name_.empty() &&
                            !said.row->is_error()
                        ? said.values[1].text
                        : new_name_;
    } else if (account_.empty() && !may_be("updateuser")) {
        account_ = said.value("username");
    }
}

bool Story::at_rest() const
{
    const bool not_deleted = may_be("deleteuser") && events_.back().said.row->function == "DelUser";
    return !tells_requester() || is_updated() || not_deleted;
}

void Story::settle()
{
    settled_ = true;
    if (ended() || !tells_requester()) {
        return; // of lesser levels last statements may be missing
    }
    for (const std::string_view silent : {"deleteuser", "updateuser"}) {
        if (may_be(silent) && phases_[silent] > BEGUN) {
            phases_ = {{silent, phases_[silent]}};
        }
    }
}

std::vector<std::string_view> Story::operations() const
{
    std::vector<std::string_view> names;
    for (const auto& [operation, phase] : phases_) {
        names.push_back(operation);
    }
    return names;
}
