#include "devkit/boxwelld/account_checks.h"

#include "common/common.h"
#include "devkit/boxwelld/account.h"

#include <algorithm>

namespace {

constexpr char CDATA_END[] = "]]>";

bool has_control_character(const std::string& text)
{
    return std::any_of(text.begin(), text.end(), [](unsigned char c) {
        return c < ' ' || c == 0x7F;
    });
}

} // namespace

void check_text(const std::string& what, const std::string& text)
{
    if (has_control_character(text)) {
        throw Refusal(what + " holds a control character");
    }
    if (text.find(CDATA_END) != std::string::npos) {
        throw Refusal(what + " holds the end of a CDATA section");
    }
}

void check_name(const std::string& kind, const std::string& name)
{
    check_text(kind + " name", name);
    if (name.empty()) {
        throw Refusal("Invalid " + kind + " name: it is empty");
    }
    if (name.size() > MAX_USERNAME_LENGTH) {
        throw Refusal("Invalid " + kind + " name: " + name + " is longer than 31 bytes");
    }
    // ':' ends a field, ',' a member; '#', '+', '-' and a blank in front mean something else.
    if (name.find_first_of(":/,") != std::string::npos ||
        std::string("#+- ").find(name.front()) != std::string::npos) {
        throw Refusal("Invalid " + kind + " name: " + name);
    }
}
