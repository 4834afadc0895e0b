/** The transaction that the broker hands to a plug-in for one command. */
#pragma once

#include "common/common.h"
#include "devkit/broker/command.h"

#include <vector>

class Transaction : public ITransaction {
  public:
    explicit Transaction(Command command);

    /** What the plug-in has added, one string a response parameter. */
    const std::vector<std::string>& responses() const { return responses_; }

    const std::string& getGuid() const override { return nothing_; }
    const std::string& getMethod() const override { return method_; }
    const std::string& getBody() const override { return nothing_; }
    const std::string& getResponse() override;
    const std::string& getRequest() const override { return command_.words.front(); }
    const std::string& getMoniker() const override { return moniker_; }
    const std::string& getResponseURL() const override { return response_url_; }
    TTransactionCode getCode() const override { return code_; }
    int getLogLevel() const override { return command_.log_level; }
    const FILE* getOutputFile() const override { return output_file_; }
    const std::string& getTempPipeName() const override { return temp_pipe_name_; }
    bool getRequestParam(int index, std::string& value) const override;
    bool getAuthInfo(std::string& value) const override;
    bool getResponseParam(int index, std::string& value) const override;
    void setCode(TTransactionCode code) override { code_ = code; }
    void setMoniker(const std::string& moniker) override { moniker_ = moniker; }
    void setMethod(const std::string& method) override { method_ = method; }
    void setBodyType(const std::string&) override {}
    /** The index of the new parameter. */
    int addResponseParam(const std::string& value) override;
    void setOutputFile(FILE* file) override { output_file_ = file; }
    void setTempPipeName(const std::string& name) override { temp_pipe_name_ = name; }
    void setTempZipPath(const std::string&) override {}
    void setZipFlag(int flag) override { zip_flag_ = flag; }
    int getZipFlag() const override { return zip_flag_; }
    void setResponseURL(const std::string& url) override { response_url_ = url; }
    void setRangeStart(const std::string& start) override { range_start_ = start; }
    void setRangeEnd(const std::string& end) override { range_end_ = end; }
    const std::string& getRangeStart() const override { return range_start_; }
    const std::string& getRangeEnd() const override { return range_end_; }

  private:
    const std::string nothing_;
    Command command_;
    std::string auth_info_;
    TTransactionCode code_ = CODE_UNDEFINED;
    std::vector<std::string> responses_;
    std::string method_;
    std::string moniker_;
    std::string response_url_;
    FILE* output_file_ = nullptr;
    std::string temp_pipe_name_;
    int zip_flag_ = 0;
    std::string range_start_;
    std::string range_end_;
};
