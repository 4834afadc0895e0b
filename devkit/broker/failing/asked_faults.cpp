#include "devkit/broker/failing/asked_faults.h"

#include "devkit/broker/command.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <optional>

namespace {

constexpr int GREATEST_ERRNO = 4095; // of the kernel

BadUse bad(const std::string& text, const std::string& what)
{
    return BadUse("--fail " + text + ": " + what);
}

/** Whether the kind is one of calls: the client library's is the device's own here. */
bool can_be_asked(const Kind& kind)
{
    return std::strcmp(kind.name, "client") != 0;
}

bool has_call(const Kind& kind, const std::string& name)
{
    return name == kind.name ||
           std::any_of(kind.calls.begin(), kind.calls.end(), [&](const char* call) {
               return name == call;
           });
}

/** "access, allocation (malloc, new), ...". */
std::string known_calls()
{
    std::string list;
    for (const Kind& kind : KINDS) {
        if (!can_be_asked(kind)) {
            continue;
        }
        list += std::string(list.empty() ? "" : ", ") + kind.name;
        const char* mark = " (";
        for (const char* call : kind.calls) {
            list += std::string(mark) + call;
            mark = ", ";
        }
        list += kind.calls.empty() ? "" : ")";
    }
    return list;
}

std::optional<int> number(const std::string& text)
{
    int value = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

/** The errors that a kind has beside errno's, by name. */
std::optional<int> own_error(const Kind& kind, const std::string& name)
{
    const std::pair<const char*, int> errors[] = {{"HALF", HALF}, {"NOBODY", NOBODY}};
    for (const auto& [own, error] : errors) {
        const bool has =
            std::find(kind.errors.begin(), kind.errors.end(), error) != kind.errors.end();
        if (has && name == own) {
            return error;
        }
    }
    return std::nullopt;
}

std::optional<int> error_of_errno(const std::string& text)
{
    const std::optional<int> given = number(text);
    for (int error = 1; error <= GREATEST_ERRNO; ++error) {
        const char* name = strerrorname_np(error);
        if (name != nullptr && (given ? *given == error : text == name)) {
            return error;
        }
    }
    return std::nullopt;
}

int error_for(const Kind& kind, const std::string& name, const std::string& text)
{
    if (std::strcmp(kind.name, "regex") == 0) {
        throw bad(text, "regex has no errno, it fails in one way");
    }
    const std::optional<int> own = own_error(kind, name);
    const std::optional<int> error = own ? own : error_of_errno(name);
    if (!error) {
        throw bad(
            text, "unknown error " + name +
                      ": expected a name of errno, as EIO, or a number of one, "
                      "of read and write HALF, of look-up NOBODY"
        );
    }
    return *error;
}

} // namespace

Fault parse_fault(const std::string& text)
{
    const std::size_t first = text.find(':');
    if (first == std::string::npos) {
        throw bad(text, "expected CALL:N or CALL:N:ERRNO");
    }
    const std::size_t second = text.find(':', first + 1);
    const std::string call = text.substr(0, first);
    const auto kind = std::find_if(KINDS.begin(), KINDS.end(), [&](const Kind& known) {
        return can_be_asked(known) && has_call(known, call);
    });
    if (kind == KINDS.end()) {
        throw bad(text, "unknown call " + call + ": there are " + known_calls());
    }
    const std::optional<int> nth = number(text.substr(first + 1, second - first - 1));
    if (!nth || *nth < 1) {
        throw bad(
            text, "N is a whole number from 1 to " + std::to_string(std::numeric_limits<int>::max())
        );
    }
    const int error = second == std::string::npos ? kind->errors.front()
                                                  : error_for(*kind, text.substr(second + 1), text);
    return {.kind = kind->name, .error = error, .nth = *nth};
}
