/** Reading a command's parameters. */
#pragma once

#include "common/common.h"

#include <string>

/** Reads parameters 1, 2, … into `values`, stopping at the first that is missing; false then. */
template<typename... Strings>
bool readParameters(const ITransaction& transaction, Strings&... values)
{
    int index = 0;
    return (transaction.getRequestParam(++index, values) && ...);
}

/** `name` cut to what an account name may hold. */
inline std::string accountName(const std::string& name)
{
    return name.substr(0, MAX_USERNAME_LENGTH);
}
