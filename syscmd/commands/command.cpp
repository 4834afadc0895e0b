#include "syscmd/commands/command.h"

#include "common/account_name.h"
#include "syscmd/strict.h"

bool readParameters(const ITransaction& tx, std::span<std::string> values)
{
    int index = 0;
    for (std::string& value : values) {
        if (!tx.getRequestParam(++index, value)) {
            return false;
        }
    }
    return !STRICT || checkParameters(tx, values);
}

std::string accountName(const std::string& text)
{
    return std::string(std::string_view(text).substr(0, MAX_USERNAME_LENGTH));
}

void fail(ITransaction& tx, std::string& response, const char* text, std::string_view rest)
{
    response = text;
    response += rest;
    tx.setCode(CODE_FAILED);
}

void succeed(ITransaction& tx, std::string& response)
{
    response = "success";
    tx.setCode(CODE_SUCCEED);
}
