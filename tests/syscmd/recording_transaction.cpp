#include "tests/syscmd/recording_transaction.h"

#include <gtest/gtest.h>

bool RecordingTransaction::getRequestParam(int index, std::string& value) const
{
    calls.push_back("getRequestParam " + std::to_string(index));
    const auto at = static_cast<std::size_t>(index);
    EXPECT_LE(at, params.size()) << "what is behind a missing parameter is read";
    if (at >= params.size())
        return false;
    value = params[at];
    return true;
}

bool RecordingTransaction::getAuthInfo(std::string& value) const
{
    calls.emplace_back("getAuthInfo");
    value = credentials.value_or("");
    return credentials.has_value();
}

void RecordingTransaction::setCode(TTransactionCode new_code)
{
    code = new_code;
    calls.push_back("setCode " + std::to_string(new_code));
    on_effect("code " + std::to_string(new_code));
}

int RecordingTransaction::addResponseParam(const std::string& value)
{
    responses.push_back(value);
    calls.push_back("addResponseParam " + value);
    on_effect("response " + value);
    return 0;
}

const std::string& RecordingTransaction::unexpected() const
{
    ADD_FAILURE() << "an operation of the transaction that the plug-in does not use";
    return params.front();
}
