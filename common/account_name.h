/** Names of accounts. */
#pragma once

#include <cstddef>

/** The longest login, owner name and account name, in bytes; longer ones are cut to it. */
constexpr std::size_t MAX_USERNAME_LENGTH = 31;
