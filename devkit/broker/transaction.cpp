#include "devkit/broker/transaction.h"

#include "devkit/broker/base64.h"

#include <utility>

namespace {

bool copy_at(const std::vector<std::string>& values, int index, std::string& value)
{
    if (index < 0 || static_cast<std::size_t>(index) >= values.size()) {
        return false;
    }
    value = values[static_cast<std::size_t>(index)];
    return true;
}

} // namespace

Transaction::Transaction(Command command) : command_(std::move(command))
{
    if (command_.credentials) {
        auth_info_ = base64(*command_.credentials);
    }
}

const std::string& Transaction::getResponse()
{
    return responses_.empty() ? nothing_ : responses_.back();
}

bool Transaction::getRequestParam(int index, std::string& value) const
{
    return copy_at(command_.words, index, value);
}

bool Transaction::getAuthInfo(std::string& value) const
{
    if (!command_.credentials) {
        return false;
    }
    value = auth_info_;
    return true;
}

bool Transaction::getResponseParam(int index, std::string& value) const
{
    return copy_at(responses_, index, value);
}

int Transaction::addResponseParam(const std::string& value)
{
    responses_.push_back(value);
    return static_cast<int>(responses_.size()) - 1;
}
