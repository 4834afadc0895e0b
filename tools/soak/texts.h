/** What becomes of a text in a request, and which ones the management daemon keeps. */
#pragma once

#include "tools/between.h"

#include <string>

/** Well-formed in a CDATA section, as an element's text, in double quotes as an attribute's value.
 */
bool fits_section(const std::string& text);
bool fits_element(const std::string& text);
bool fits_attribute(const std::string& text);

/** An attribute's value as it is read: line ends and tabs are blanks. */
std::string as_attribute(std::string text);

/** Kept by the daemon as a value, and as an account's name. */
bool is_kept(const std::string& text);
bool is_name(const std::string& text);
