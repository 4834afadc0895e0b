// Password hashes and the MD4 under them, beside other libraries.
#include "bench/families.h"
#include "common/hash.h"

#include <crypt.h>
#include <nettle/md4.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <array>
#include <string>

namespace {

using Digest = std::array<unsigned char, 16>;

Digest ourDigest(const std::string& data)
{
    Digest digest;
    MD4_CTX context;
    MD4_Init(&context);
    MD4_Update(&context, data.data(), data.size());
    MD4_Final(digest.data(), &context);
    return digest;
}

Digest nettleDigest(const std::string& data)
{
    Digest digest;
    md4_ctx context;
    md4_init(&context);
    md4_update(&context, data.size(), reinterpret_cast<const std::uint8_t*>(data.data()));
    md4_digest(&context, digest.size(), digest.data());
    return digest;
}

/** OpenSSL's MD4, fetched once; its context is used again, which is the quickest way. */
struct OpenSsl {
    OSSL_PROVIDER* legacy = OSSL_PROVIDER_load(nullptr, "legacy");
    EVP_MD* md4 = EVP_MD_fetch(nullptr, "MD4", nullptr);
    EVP_MD_CTX* context = EVP_MD_CTX_new();

    OpenSsl() = default;
    OpenSsl(const OpenSsl&) = delete;
    OpenSsl& operator=(const OpenSsl&) = delete;
    ~OpenSsl()
    {
        EVP_MD_CTX_free(context);
        EVP_MD_free(md4);
        OSSL_PROVIDER_unload(legacy);
    }

    Digest digest(const std::string& data) const
    {
        Digest result = {};
        EVP_DigestInit_ex2(context, md4, nullptr);
        EVP_DigestUpdate(context, data.data(), data.size());
        EVP_DigestFinal_ex(context, result.data(), nullptr);
        return result;
    }
};

void benchMd4(Frame& frame, const char* name, std::size_t size, double goal)
{
    if (!frame.wants(name)) {
        return;
    }
    const OpenSsl openssl;
    std::string data(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        data[i] = static_cast<char>(i * 7);
    }
    const auto ours = [&] {
        return ourDigest(data);
    };
    frame.compare({.name = name, .against = "nettle", .goal = goal}, ours, [&] {
        return nettleDigest(data);
    });
    frame.compare({.name = name, .against = "OpenSSL", .goal = goal}, ours, [&] {
        return openssl.digest(data);
    });
}

/** The NT hash by nettle; its digest has no byte below 16, which we write as one digit. */
Text nettleNtHash(const char* password)
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    std::uint8_t wide[2 * 12] = {};
    for (std::size_t i = 0; i < 12; ++i) {
        wide[2 * i] = static_cast<std::uint8_t>(password[i]);
    }
    Digest digest;
    md4_ctx context;
    md4_init(&context);
    md4_update(&context, sizeof wide, wide);
    md4_digest(&context, digest.size(), digest.data());
    Text text(static_cast<char*>(std::malloc(33)));
    char* end = text.get();
    for (const unsigned char byte : digest) {
        *end++ = DIGITS[byte >> 4];
        *end++ = DIGITS[byte & 15];
    }
    *end = '\0';
    return text;
}

} // namespace

void benchHashes(Frame& frame)
{
    benchMd4(frame, "MD4, 16 B", 16, 1.0);
    benchMd4(frame, "MD4, 64 KiB", 65536, 1.05);

    static constexpr const char* PASSWORD = "twelve chr00";
    frame.compare(
        {.name = "NT hash, 12 characters", .against = "nettle, digits by table", .goal = 0.9},
        [] { return Text(SMB_enc_passwd(PASSWORD)); }, [] { return nettleNtHash(PASSWORD); }
    );

    // The same salt each time, so that the hashes can be compared.
    const auto ours = [] {
        drand48_buf = {};
        return Text(SYS_enc_passwd(PASSWORD));
    };
    const Text salt = ours();
    crypt_data work = {};
    frame.compare({.name = "MD5-crypt", .against = "crypt_r alone", .goal = 1.02}, ours, [&] {
        return Text(strdup(crypt_r(PASSWORD, salt.get(), &work)));
    });
}
