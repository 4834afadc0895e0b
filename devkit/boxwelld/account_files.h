/**
 * The daemon's sections of passwd and group. Each file holds at most one, between two comment
 * lines; every other line is somebody else's and stays as it is. A section whose end is missing is
 * a Refusal.
 */
#pragma once

#include "devkit/boxwelld/account.h"

#include <string>
#include <string_view>
#include <vector>

/** The lines for passwd: home /home/NAME, shell /bin/false, no hashes. */
std::string passwd_lines(const std::vector<Account>& accounts, const std::vector<Group>& groups);

/** The lines for group; members are the accounts that are in it beside their primary group. */
std::string group_lines(const std::vector<Account>& accounts, const std::vector<Group>& groups);

/** Replaces the daemon's section of `path` by `lines`; writes nothing where that changes nothing.
 */
void rewrite_section(const std::string& path, std::string_view lines);

/** Whether a line that is not the daemon's begins with `name` and a colon. */
bool is_taken(const std::string& path, const std::string& name);
