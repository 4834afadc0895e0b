/** What names and values may look like; a violation is thrown as a Refusal. */
#pragma once

#include <string>

/** 1 to 31 bytes, nothing that would break a line of passwd or group; `kind` says whose name. */
void check_name(const std::string& kind, const std::string& name);

/** Any text but control characters and "]]>", which no CDATA section can hold. */
void check_text(const std::string& what, const std::string& text);
