/** A transaction that costs as little as it can; it keeps what is done to it while it is asked to.
 */
#pragma once

#include "common/common.h"

#include <string>
#include <vector>

struct PlainTransaction : ITransaction {
    std::vector<std::string> params; // the first is the operation's name
    std::string credentials;         // Base64
    int log_level = 3;
    bool keeping = false;
    std::string effects; // what was done, while `keeping`

    void note(const char* what, const std::string& value)
    {
        if (keeping) {
            effects.append(what).append(value).append("\n");
        }
    }

    int getLogLevel() const override { return log_level; }
    bool getRequestParam(int index, std::string& value) const override
    {
        value = params[static_cast<std::size_t>(index)];
        return true;
    }
    bool getAuthInfo(std::string& value) const override
    {
        value = credentials;
        return true;
    }
    void setCode(TTransactionCode code) override
    {
        note("code ", keeping ? std::to_string(code) : "");
    }
    void setMoniker(const std::string& text) override { note("moniker ", text); }
    void setMethod(const std::string& text) override { note("method ", text); }
    void setBodyType(const std::string& text) override { note("body ", text); }
    int addResponseParam(const std::string& value) override
    {
        note("response ", value);
        return 0;
    }

    // What the plug-in does not use.
    const std::string& getGuid() const override { return credentials; }
    const std::string& getMethod() const override { return credentials; }
    const std::string& getBody() const override { return credentials; }
    const std::string& getResponse() override { return credentials; }
    const std::string& getRequest() const override { return credentials; }
    const std::string& getMoniker() const override { return credentials; }
    const std::string& getResponseURL() const override { return credentials; }
    TTransactionCode getCode() const override { return CODE_UNDEFINED; }
    const FILE* getOutputFile() const override { return nullptr; }
    const std::string& getTempPipeName() const override { return credentials; }
    bool getResponseParam(int, std::string&) const override { return false; }
    void setOutputFile(FILE*) override {}
    void setTempPipeName(const std::string&) override {}
    void setTempZipPath(const std::string&) override {}
    void setZipFlag(int) override {}
    int getZipFlag() const override { return 0; }
    void setResponseURL(const std::string&) override {}
    void setRangeStart(const std::string&) override {}
    void setRangeEnd(const std::string&) override {}
    const std::string& getRangeStart() const override { return credentials; }
    const std::string& getRangeEnd() const override { return credentials; }
};
