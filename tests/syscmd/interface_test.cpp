// The transaction interface as the broker was built against it: a virtual table laid out by hand,
// slot by slot, independent of our header.
#include "tests/syscmd/device.h"
#include "tests/syscmd/trace.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

namespace {

struct Transaction {
    const void* const* table;
    std::vector<std::string> calls;
    std::vector<std::string> params;
};

// The broker's calls as the ABI makes them: the object first, a bool as a byte, a string by
// address.
template<int slot> void unexpected(Transaction*)
{
    ADD_FAILURE() << "slot " << slot;
}

int getLogLevel(const Transaction* self)
{
    const_cast<Transaction*>(self)->calls.emplace_back("getLogLevel");
    return 5;
}

bool getRequestParam(const Transaction* self, int index, std::string* value)
{
    const_cast<Transaction*>(self)->calls.push_back("getRequestParam " + std::to_string(index));
    if (index >= static_cast<int>(self->params.size()))
        return false;
    *value = self->params[static_cast<std::size_t>(index)];
    return true;
}

bool getAuthInfo(const Transaction* self, std::string* value)
{
    const_cast<Transaction*>(self)->calls.emplace_back("getAuthInfo");
    *value = base64("alice:secret");
    return true;
}

void setCode(Transaction* self, std::int32_t code)
{
    self->calls.push_back("setCode " + std::to_string(code));
}

template<int slot> void setText(Transaction* self, const std::string* text)
{
    self->calls.push_back("slot " + std::to_string(slot) + " " + *text);
}

int addResponseParam(Transaction* self, const std::string* text)
{
    self->calls.push_back("addResponseParam " + *text);
    return 0;
}

constexpr int LAST_SLOT = 30;

template<int... slots> std::vector<const void*> layOut(std::integer_sequence<int, slots...>)
{
    std::vector<const void*> table = {reinterpret_cast<const void*>(&unexpected<slots>)...};
    const auto put = [&](std::size_t slot, auto* call) {
        table[slot] = reinterpret_cast<const void*>(call);
    };
    put(10, &getLogLevel);
    put(13, &getRequestParam);
    put(14, &getAuthInfo);
    put(16, &setCode);
    put(17, &setText<17>);
    put(18, &setText<18>);
    put(19, &setText<19>);
    put(20, &addResponseParam);
    return table;
}

TEST(Interface, isCalledBySlot)
{
    resetDevice();
    // The destructor fills entries 0 and 1, so that slot n of the interface is entry n.
    const auto table = layOut(std::make_integer_sequence<int, LAST_SLOT + 1>());
    Transaction transaction = {table.data(), {}, {"addremoteuser", "zed"}};
    pluginEntry()(reinterpret_cast<ITransaction*>(&transaction));
    std::vector<std::string> calls = {"getLogLevel", "slot 17 /root/devices", "slot 18 userstate", "slot 19 jobstate",
        "getRequestParam 0", "getAuthInfo", "getRequestParam 1", "setCode 0", "addResponseParam success"};
    if (isStrict())
        calls.insert(calls.end() - 2, {"getRequestParam 0", "getAuthInfo"});
    EXPECT_EQ(transaction.calls, calls);
}

template<int slot> const std::string* noted(Transaction* self)
{
    static const std::string nothing;
    self->calls.push_back(std::to_string(slot));
    return &nothing;
}

/** Calls what the plug-in does not, in the order of the slots. */
void callUnused(ITransaction* tx)
{
    std::string text;
    tx->getGuid(), tx->getMethod(), tx->getBody(), tx->getResponse(), tx->getRequest(), tx->getMoniker(),
        tx->getResponseURL();
    tx->getCode(), tx->getOutputFile(), tx->getTempPipeName(), tx->getResponseParam(0, text),
        tx->setOutputFile(nullptr);
    tx->setTempPipeName(text), tx->setTempZipPath(text), tx->setZipFlag(0), tx->getZipFlag(), tx->setResponseURL(text);
    tx->setRangeStart(text), tx->setRangeEnd(text), tx->getRangeStart(), tx->getRangeEnd();
}

template<int... slots> void expectSlots(std::integer_sequence<int, slots...>)
{
    const std::vector<const void*> table = {reinterpret_cast<const void*>(&noted<slots>)...};
    Transaction transaction = {table.data(), {}, {}};
    callUnused(reinterpret_cast<ITransaction*>(&transaction));
    EXPECT_EQ(transaction.calls, (std::vector<std::string>{"2", "3", "4", "5", "6", "7", "8", "9", "11", "12", "15",
                                     "21", "22", "23", "24", "25", "26", "27", "28", "29", "30"}));
}

TEST(Interface, hasASlotForWhatIsNotCalled)
{
    expectSlots(std::make_integer_sequence<int, LAST_SLOT + 1>());
}

TEST(Interface, nullIsIgnored)
{
    resetDevice();
    pluginEntry()(nullptr);
    EXPECT_TRUE(fileStatements().empty());
}

/** A broker out of memory. */
struct ThrowingTransaction : RecordingTransaction {
    explicit ThrowingTransaction(const std::string& operation, int answers_refused) : refused(answers_refused)
    {
        params = {operation};
    }
    int refused; // of addResponseParam's calls
    int addResponseParam(const std::string& value) override
    {
        if (refused-- > 0)
            throw std::bad_alloc();
        return RecordingTransaction::addResponseParam(value);
    }
    bool getAuthInfo(std::string&) const override { throw std::bad_alloc(); }
};

TEST(Interface, exceptionsStayInside)
{
    const Said ended = said("execute: ended by an exception");
    const Said unknown = said("execute: unknown operation", "nothing");
    const struct {
        ThrowingTransaction transaction;
        Trace trace;
    } table[] = {
        {ThrowingTransaction("adduser", 0), {ended, "code 1", "response system command failed"}},
        {ThrowingTransaction("nothing", 1), {unknown, "code 1", ended, "code 1", "response system command failed"}},
        {ThrowingTransaction("nothing", 2), {unknown, "code 1", ended, "code 1", said("execute: no memory")}},
    };
    for (auto [transaction, trace] : table) {
        resetDevice();
        command(transaction);
        EXPECT_EQ(transaction.code, CODE_FAILED);
        expectSaid(trace);
    }
}

/** A broker one of whose calls throws. */
struct FailingTransaction : RecordingTransaction {
    mutable int calls_left = 0; // until that one; negative: it was made
    void count() const
    {
        if (calls_left-- == 0)
            throw std::bad_alloc();
    }
    int getLogLevel() const override { return count(), RecordingTransaction::getLogLevel(); }
    bool getRequestParam(int index, std::string& value) const override
    {
        return count(), RecordingTransaction::getRequestParam(index, value);
    }
    bool getAuthInfo(std::string& value) const override { return count(), RecordingTransaction::getAuthInfo(value); }
    void setCode(TTransactionCode value) override { count(), RecordingTransaction::setCode(value); }
    void setMoniker(const std::string&) override { count(); }
    void setMethod(const std::string&) override { count(); }
    void setBodyType(const std::string&) override { count(); }
    int addResponseParam(const std::string& value) override
    {
        return count(), RecordingTransaction::addResponseParam(value);
    }
};

TEST(Interface, anExceptionOfEachCallIsAnsweredOnce)
{
    resetDevice();
    for (const char* login : {"alice", "mallory"}) { // who is admitted, and who is not
        for (int calls = 0;; ++calls) {
            FailingTransaction transaction;
            transaction.params = {"addremoteuser", ""};
            transaction.credentials = base64(login);
            transaction.calls_left = calls;
            command(transaction);
            EXPECT_EQ(transaction.code, CODE_FAILED) << login << ' ' << calls;
            EXPECT_EQ(transaction.responses.size(), 1U) << login << ' ' << calls;
            if (transaction.calls_left >= 0) {
                EXPECT_GE(calls, 8);
                break;
            }
        }
    }
}

} // namespace
