/** A transaction that answers from a list of parameters and records what the plug-in does to it. */
#pragma once

#include "common/common.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

struct RecordingTransaction : ITransaction {
    std::vector<std::string> params;
    std::optional<std::string> credentials; // Base64
    int log_level = 7;
    /** Told of every effect, "code 1" or "response success", as it happens. */
    std::function<void(const std::string&)> on_effect = [](const std::string&) {
    };

    mutable std::vector<std::string> calls; // "getRequestParam 0", "setMoniker /root/devices", …
    TTransactionCode code = CODE_UNDEFINED;
    std::vector<std::string> responses;

    int getLogLevel() const override { return log_level; }
    bool getRequestParam(int index, std::string& value) const override;
    bool getAuthInfo(std::string& value) const override;
    void setCode(TTransactionCode new_code) override;
    void setMoniker(const std::string& text) override { calls.push_back("setMoniker " + text); }
    void setMethod(const std::string& text) override { calls.push_back("setMethod " + text); }
    void setBodyType(const std::string& text) override { calls.push_back("setBodyType " + text); }
    int addResponseParam(const std::string& value) override;

    // What the plug-in has no business with.
    const std::string& unexpected() const;
    const std::string& getGuid() const override { return unexpected(); }
    const std::string& getMethod() const override { return unexpected(); }
    const std::string& getBody() const override { return unexpected(); }
    const std::string& getResponse() override { return unexpected(); }
    const std::string& getRequest() const override { return unexpected(); }
    const std::string& getMoniker() const override { return unexpected(); }
    const std::string& getResponseURL() const override { return unexpected(); }
    TTransactionCode getCode() const override { return unexpected(), code; }
    const FILE* getOutputFile() const override { return unexpected(), nullptr; }
    const std::string& getTempPipeName() const override { return unexpected(); }
    bool getResponseParam(int, std::string&) const override { return unexpected(), false; }
    void setOutputFile(FILE*) override { unexpected(); }
    void setTempPipeName(const std::string&) override { unexpected(); }
    void setTempZipPath(const std::string&) override { unexpected(); }
    void setZipFlag(int) override { unexpected(); }
    int getZipFlag() const override { return unexpected(), 0; }
    void setResponseURL(const std::string&) override { unexpected(); }
    void setRangeStart(const std::string&) override { unexpected(); }
    void setRangeEnd(const std::string&) override { unexpected(); }
    const std::string& getRangeStart() const override { return unexpected(); }
    const std::string& getRangeEnd() const override { return unexpected(); }
};
