#include "common/hash.h"
#include "tests/liblst/support.h"

#include <crypt.h>
#include <gtest/gtest.h>
#include <nettle/md4.h>
#include <pthread.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

/** Another library's MD4 over the widened password, its bytes printed as numbers. */
std::string ntHash(const std::string& password)
{
    std::string wide;
    for (const char byte : password) {
        wide += {byte, '\0'};
    }
    md4_ctx ctx;
    std::array<unsigned char, 16> digest;
    md4_init(&ctx);
    md4_update(&ctx, wide.size(), reinterpret_cast<const unsigned char*>(wide.data()));
    md4_digest(&ctx, digest.size(), digest.data());
    std::string result;
    for (const unsigned byte : digest) {
        char number[3];
        std::snprintf(number, sizeof number, "%X", byte);
        result += number;
    }
    return result;
}

TEST(SmbHash, AgreesWithNettle)
{
    // The published hash is 8846F7EA EE8FB117 AD06BDD8 30B7586C: the byte 06 is one digit.
    EXPECT_EQ(text(SMB_enc_passwd("password")), "8846F7EAEE8FB117AD6BDD830B7586C");
    std::minstd_rand random(1);
    std::string password;
    for (int i = 0; i < 500; ++i) {
        password += static_cast<char>(1 + random() % 255);
        EXPECT_EQ(text(SMB_enc_passwd(password.c_str())), ntHash(password)) << password.size();
    }
}

TEST(Hashes, NeedAPassword)
{
    EXPECT_EQ(SMB_enc_passwd(nullptr), nullptr);
    EXPECT_EQ(SMB_enc_passwd(""), nullptr);
    EXPECT_EQ(SYS_enc_passwd(nullptr), nullptr);
    EXPECT_EQ(SYS_enc_passwd(""), nullptr);
    EXPECT_EQ(SYS_enc_passwd(std::string(CRYPT_MAX_PASSPHRASE_SIZE, 'x').c_str()), nullptr);
    EXPECT_EQ(errno, ERANGE);
}

// By another implementation, with salts of the generator's first values: 0, 4232237, 178803790, ...
TEST(SystemHash, IsMd5CryptWithTheThreadsSalts)
{
    for (int i = 0; i < 2; ++i) { // the second thread repeats the first one's salts
        std::thread([] {
            EXPECT_EQ(text(SYS_enc_passwd("secret")), "$1$aaaaTqjq$MYN5eYTjfgolInouJ4RbQ0");
            EXPECT_EQ(text(SYS_enc_passwd("secret")), "$1$orfQepho$TDjh067HUtgwbwMLwrbbD/");
            EXPECT_EQ(text(SYS_enc_passwd("\xc3\xa4")), "$1$SkPvOfxy$c.BMGKaB.ztBKevUbGF3c/");
            EXPECT_EQ(SYS_enc_passwd(""), nullptr); // and draws no salt
            EXPECT_EQ(text(SYS_enc_passwd(std::string(100, 'x').c_str())), "$1$sgnOAsKU$mBuHZqB/vkwilKtCyjl8E.");
        }).join();
    }
}

// Of the system's hash the C library's work area holds the hash, and with other libraries more.
TEST(Hashes, LeaveNothingOnTheStack)
{
    struct {
        char* (*hash)(const char*);
        std::string left;
    } table[] = {{SMB_enc_passwd, {"s\0e\0c\0r\0", 8}}, {SYS_enc_passwd, "MYN5eYTjfgolInouJ4RbQ0"}};
    for (auto& row : table) {
        std::vector<char> stack(1 << 20);
        pthread_attr_t attributes;
        pthread_t thread;
        pthread_attr_init(&attributes);
        pthread_attr_setstack(&attributes, stack.data(), stack.size());
        const auto hash = [](void* how) -> void* {
            return (*static_cast<char* (**)(const char*)>(how))("secret");
        };
        ASSERT_EQ(pthread_create(&thread, &attributes, hash, &row.hash), 0);
        void* result = nullptr;
        pthread_join(thread, &result);
        pthread_attr_destroy(&attributes);
        EXPECT_NE(text(static_cast<char*>(result)), "(null)");
        EXPECT_EQ(std::search(stack.begin(), stack.end(), row.left.begin(), row.left.end()), stack.end());
    }
}

} // namespace
