/**
 * What every plug-in of the broker shares: the transaction interface with its result codes, the
 * owner file, the upgrade flag, and small helpers for names and lines.
 *
 * Conventions:
 *  - A `char**` argument receives a newly allocated NUL-terminated string, which the caller
 * releases with free(); it is set only on success.
 *  - A null pointer where none is allowed is refused with the failure value, never dereferenced.
 *  - Nothing here throws but what std::string throws when memory runs out.
 */
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

/** The int that routines return on success; a failure is -1 unless a routine lists other values. */
constexpr int SUCCESS = 0;

/** The longest login, owner name and account name, in bytes; longer ones are cut to it. */
constexpr std::size_t MAX_USERNAME_LENGTH = 31;

/** The device's owner file: who owns it in the cloud, and what device it is. */
#define OWNER_FILE "/opt/skyhold/etc/registration.conf"

/** The flag, by its existence, that this device's users were upgraded to single sign-on. */
#define SSO_UPGRADE_FLAG "/opt/skyhold/etc/.sso_upgraded"

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

/**
 * Decodes Base64 (RFC 4648, standard alphabet); other characters are passed over.
 *
 * @return the decoded bytes as a newly allocated NUL-terminated text, which the caller releases
 * with free(); null for null or when memory runs out
 */
char* ptDecodeBase64(const char* b64str);

/**
 * Reads the whole file at a formatted path.
 *
 * @return its content, which the caller releases with free(); null when it cannot be opened or
 *         closed, is empty, or memory runs out
 */
[[gnu::format(printf, 1, 2)]] char* aGetFile(const char* format, ...);

/**
 * Reads an open descriptor to its end; an interrupted read is repeated, a failed one ends the text.
 * The descriptor stays open.
 *
 * @return what was read, which the caller releases with free(); null for nothing
 */
char* aGetFileContent(int fn);

/**
 * Reads the first line of a stream, without its line end: at most `bufsize` - 1 bytes, of which
 * every carriage return and line feed becomes a NUL.
 *
 * @return 0, or -1 when nothing could be read
 */
int readline(char* buf, int bufsize, FILE* file);

/**
 * Makes a text of `length` random digits 0-9a-f. Reseeds rand() with the time in seconds: two calls
 * within a second give the same text.
 *
 * @return 0 with `*result` set, -1 when memory runs out or an argument is bad
 */
int generateHashString(char** result, int length);

/** A buffer for the text of an errno value. */
using ErrorText = char[128];

/** Fills `buffer` with the text of the errno value `error` (strerror_r(3)); returns the buffer. */
const char* errorText(ErrorText& buffer, int error);

/**
 * Writes the owner file: one line of XML without a line end, values as they are. The file is
 * emptied first, and deleted when the device information turns out incomplete.
 *
 * @param use_linkhub   whether to include the remote-access agent's id, where there is one
 * @param sso_username  the cloud owner's name
 * @param p2p_username  the peer-to-peer owner's name; null leaves the element out
 * @param path          the file, OWNER_FILE
 * @return 0; -1 when it cannot be opened; -3 when device information is missing (the file is gone);
 *         -4 when writing failed
 */
int createOwnerFile(
    bool use_linkhub, const char* sso_username, const char* p2p_username, const char* path
);

/** The same for a string. */
inline int createOwnerFile(
    bool use_linkhub, const std::string& sso_username, const char* p2p_username, const char* path
)
{
    return createOwnerFile(use_linkhub, sso_username.c_str(), p2p_username, path);
}

/** A line of device information, with its line end and a NUL. */
using DeviceValue = char[1024];

/** Asks the device-information tool for `key`; false when it gives none. */
bool readBoxwellInfoValue(const char* key, DeviceValue& value);

/** The same for strings; `value` is untouched when the tool gives none. */
bool readBoxwellInfoValue(const std::string& key, std::string& value);

/** The remote-access agent's id, with its line end and a NUL. */
using AgentId = char[256];

/** Reads the remote-access agent's id; false when there is none. */
bool readXid(AgentId& xid);

/** The same for a string, untouched when there is none. */
bool readXid(std::string& xid);

/**
 * Creates, or empties, the single sign-on upgrade flag.
 *
 * @return 0, or -1 with errno of creat(2)
 */
int setSSOUpgradeFlag();
