/** The daemon's replies. `status` is the last attribute of its element, and CDATA holds texts. */
#pragma once

#include "devkit/boxwelld/account.h"
#include "devkit/boxwelld/request.h"

#include <optional>
#include <string>
#include <vector>

std::string success_reply(const Envelope& envelope, const std::vector<Account>& records);

/** A failure; without a detail it says nothing about why. */
std::string failure_reply(const Envelope& envelope, const std::optional<std::string>& detail);
