// A host that has functions of the plug-in's names in its global scope: its own, or libcrypto's.
#include "liblst/export.h"
#include "tests/syscmd/recording_transaction.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>

static int stolen_calls = 0;
EXPORTED int MAX_LOG_LEVEL = 99;

#define OF_THE_HOST(name)                                                                                              \
    extern "C" EXPORTED void name();                                                                                   \
    void name()                                                                                                        \
    {                                                                                                                  \
        ++stolen_calls;                                                                                                \
    }
#ifndef LIBCRYPTO
OF_THE_HOST(MD4_Init)
OF_THE_HOST(MD4_Update)
OF_THE_HOST(MD4_Final)
#endif
OF_THE_HOST(rndb_rand)
OF_THE_HOST(String)

namespace {

template<typename Function> Function* fromPlugin(const char* name)
{
#ifdef LIBCRYPTO
    static void* const libcrypto = dlopen(LIBCRYPTO, RTLD_NOW | RTLD_GLOBAL);
    EXPECT_NE(libcrypto, nullptr) << dlerror();
#endif
    static void* const plugin = dlopen(PLUGIN, RTLD_NOW);
    EXPECT_NE(plugin, nullptr) << dlerror();
    return reinterpret_cast<Function*>(dlsym(plugin, name));
}

TEST(Host, ChangesNothingInThePlugin)
{
    char* smb = fromPlugin<char*(const char*)>("SMB_enc_passwd")("secret");
    char* sys = fromPlugin<char*(const char*)>("SYS_enc_passwd")("secret");
    char* appended = fromPlugin<char*(const char*, const char*, const char*)>("ptReplaceStr")("a", "", "b");
    EXPECT_STREQ(smb, "878D8014606CDA29677A44EFA1353FC7");
    EXPECT_EQ(std::string(sys).size(), 34U);
    EXPECT_STREQ(appended, "ab");
    EXPECT_EQ(stolen_calls, 0);
    const int* level = fromPlugin<int>("MAX_LOG_LEVEL");
    EXPECT_EQ(*level, 3);
    RecordingTransaction command; // without an operation, which no log is told of at this level
    command.log_level = 0;
    fromPlugin<void(ITransaction*)>("execute")(&command);
    EXPECT_EQ(*level, 0);
    EXPECT_EQ(MAX_LOG_LEVEL, 99);
    std::free(smb);
    std::free(sys);
    std::free(appended);
}

TEST(Host, EveryThreadHasAGeneratorOfItsOwn)
{
    // Made first: else it may take the place of one that a finished thread has left.
    const void* const own = fromPlugin<drand48_data>("drand48_buf");
    void* states[2] = {};
    for (void*& state : states) {
        std::thread([&state] {
            drand48_data generator = {};
            state = fromPlugin<drand48_data>("drand48_buf");
            for (int i = 0; i < 50; ++i) {
                long value = 0;
                mrand48_r(&generator, &value);
                EXPECT_EQ(fromPlugin<std::int32_t()>("rndb_rand")(), value);
            }
        }).join();
    }
    EXPECT_NE(states[0], own);
}

} // namespace
