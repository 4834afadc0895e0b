/** The broker's transaction interface: one command, its parameters and its answer. */
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

/** What the broker reads from a transaction after a command; the values are the broker's. */
enum ETransactionCode : std::int32_t {
    CODE_SUCCEED = 0,
    CODE_FAILED = 1,
    CODE_ERR_NOTIMPL = 2,
    CODE_ERR_NOLOAD = 3,
    CODE_ERR_NOEXEC = 4,
    CODE_ERR_TIMEOUT = 5,
    CODE_NOREPLY = 6,
    CODE_ERR_INTERNAL = 254,
    CODE_UNDEFINED = 255,
};
using TTransactionCode = ETransactionCode;

/**
 * One command of the cloud service, as the broker hands it to a plug-in. The broker creates and
 * deletes it. The order of the declarations is the order of slots in the virtual table, which the
 * broker was built against: it is binding.
 */
class ITransaction {
  public:
    virtual ~ITransaction() = default;
    virtual const std::string& getGuid() const = 0;
    virtual const std::string& getMethod() const = 0;
    virtual const std::string& getBody() const = 0;
    virtual const std::string& getResponse() = 0;
    virtual const std::string& getRequest() const = 0;
    virtual const std::string& getMoniker() const = 0;
    virtual const std::string& getResponseURL() const = 0;
    virtual TTransactionCode getCode() const = 0;
    /** The journal's threshold for this command, on the syslog scale (0 to 7). */
    virtual int getLogLevel() const = 0;
    virtual const FILE* getOutputFile() const = 0;
    virtual const std::string& getTempPipeName() const = 0;
    /** Copies request parameter `index` (0: the operation's name); false when there is none. */
    virtual bool getRequestParam(int index, std::string& value) const = 0;
    /** Copies the requester's credentials, Base64 of login:password; false when there are none. */
    virtual bool getAuthInfo(std::string& value) const = 0;
    virtual bool getResponseParam(int index, std::string& value) const = 0;
    virtual void setCode(TTransactionCode code) = 0;
    virtual void setMoniker(const std::string& moniker) = 0;
    virtual void setMethod(const std::string& method) = 0;
    virtual void setBodyType(const std::string& body_type) = 0;
    virtual int addResponseParam(const std::string& value) = 0;
    virtual void setOutputFile(FILE* file) = 0;
    virtual void setTempPipeName(const std::string& name) = 0;
    virtual void setTempZipPath(const std::string& path) = 0;
    virtual void setZipFlag(int flag) = 0;
    virtual int getZipFlag() const = 0;
    virtual void setResponseURL(const std::string& url) = 0;
    virtual void setRangeStart(const std::string& start) = 0;
    virtual void setRangeEnd(const std::string& end) = 0;
    virtual const std::string& getRangeStart() const = 0;
    virtual const std::string& getRangeEnd() const = 0;
};
