#include "common/hash.h"
#include "tests/liblst/support.h"

#include <crypt.h>
#include <gtest/gtest.h>
#include <nettle/md4.h>

#include <array>
#include <cerrno>
#include <memory>
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

/** The next salt of an unseeded generator. */
std::string nextSalt(drand48_data* generator)
{
    std::string salt = "$1$";
    for (int draw = 0; draw < 2; ++draw) {
        long value = 0;
        mrand48_r(generator, &value);
        for (int shift = 0; shift < 24; shift += 6) {
            salt +=
                "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789./"[static_cast<unsigned long>(value) >>
                                                                                       shift &
                                                                                   63];
        }
    }
    return salt + "$";
}

TEST(SystemHash, IsMd5CryptWithTheThreadsSalts)
{
    for (int i = 0; i < 2; ++i) { // the second thread repeats the first one's salts
        std::thread([] {
            drand48_data generator = {};
            const auto work = std::make_unique<crypt_data>();
            for (const char* password : {"secret", "secret", "\xc3\xa4"}) {
                const std::string salt = nextSalt(&generator);
                const std::string hash = text(SYS_enc_passwd(password));
                EXPECT_EQ(hash, crypt_r(password, salt.c_str(), work.get()));
                EXPECT_EQ(hash.size(), salt.size() + 22);
            }
        }).join();
    }
}

} // namespace
