#include "tools/soak/texts.h"

#include <glib.h>

#include <algorithm>

namespace {

constexpr std::size_t LONGEST_NAME = 31;

bool has(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

bool is_control(char c)
{
    return static_cast<unsigned char>(c) < ' ';
}

/** Characters that XML knows. */
bool is_xml(const std::string& text)
{
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE &&
           std::none_of(text.begin(), text.end(), [](char c) {
               return is_control(c) && c != '\t' && c != '\n' && c != '\r';
           });
}

} // namespace

bool fits_section(const std::string& text)
{
    return is_xml(text) && !has(text, "]]>");
}

bool fits_element(const std::string& text)
{
    return fits_section(text) && text.find_first_of("<&") == std::string::npos;
}

bool fits_attribute(const std::string& text)
{
    return is_xml(text) && text.find_first_of("<&\"") == std::string::npos;
}

std::string as_attribute(std::string text)
{
    for (std::size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos; ++at) {
        text.erase(at, 1);
    }
    std::replace_if(text.begin(), text.end(), is_control, ' ');
    return text;
}

bool is_kept(const std::string& text)
{
    return std::none_of(text.begin(), text.end(), is_control) && !has(text, "\x7F") &&
           !has(text, "]]>");
}

bool is_name(const std::string& text)
{
    return is_kept(text) && !text.empty() && text.size() <= LONGEST_NAME &&
           text.find_first_of(":/,") == std::string::npos &&
           std::string("#+- ").find(text.front()) == std::string::npos;
}
