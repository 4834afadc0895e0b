// What each kind of parameter may hold in a strict build.
#include "syscmd/strict.h"

#include <glib.h>
#include <gtest/gtest.h>

namespace {

using enum Parameter;

std::string repeated(const std::string& text, int times)
{
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

std::string base64(const std::string& text)
{
    gchar* const encoded = g_base64_encode(reinterpret_cast<const guchar*>(text.data()), text.size());
    std::string copy = encoded;
    g_free(encoded);
    return copy;
}

const std::string X_30(30, 'x');
const std::string E_ACUTE = "\xc3\xa9";

const struct {
    std::vector<Parameter> parameters;
    std::vector<std::string> accepted;
    std::vector<std::string> rejected;
} TABLE[] = {
    {
        {User, Email, P2pUser},
        {"", "bob", "bob@example.com", "zo\xc3\xab", "a b-", "...", ".a", "x'#%();=?[]]{|}~*!,+", std::string(254, 'x'),
            X_30 + "x" + E_ACUTE, X_30.substr(1) + E_ACUTE + "y", "\xc2\xa0\xf0\x9f\x98\x80"},
        {".", "..", "-b", "a\"b", "a$b", "a&b", "a/b", "a:b", "a<b", "a>b", "a\\b", "a`b", "a\nb", "a\rb", "\x1b",
            "\x1f", "\x7f", std::string("a\0b", 3), std::string(255, 'x'), "\xc3", "a\xa9", "\xc0\xaf", "\xed\xa0\x80",
            "\xf4\x90\x80\x80", X_30 + E_ACUTE, X_30 + "\xe2\x82\xac", repeated(E_ACUTE, 16)},
    },
    {
        {Pair},
        {"", base64("SMB:$1$salt$sys./tem=,"), base64("09azAZ"), "YWJj", "YTpi=", repeated("YWFh", 128)},
        {base64("a:b<"), base64("a:b\n"), base64("a:b]"), base64("a:b\""), base64(std::string("a:b\0", 4)), "YTpi\n",
            "YTp-", "YTp_", "YTp i", std::string("YTpi\0", 5), repeated("YWFh", 128) + "Y"},
    },
    {
        {Token},
        {"t", "azAZ09+-=_~", std::string(200, 't')},
        {"", ".", "..", "a.b", "a/b", "../x", "a b", "a\n", std::string("a\0", 2), "\xc3\xa9", "[", "@", "`", "{",
            std::string(201, 't')},
    },
    {
        {Expiry},
        {"", "0", "00", "1898600000"},
        {"a", "-1", "+1", " 1", "1\n", "/", ":", std::string("0\0x", 3)},
    },
    {{None}, {}, {"", "x"}},
};

TEST(Strict, whatParametersMayHold)
{
    for (const auto& [parameters, accepted, rejected] : TABLE) {
        for (const Parameter parameter : parameters) {
            for (const std::string& value : accepted)
                EXPECT_TRUE(mayHold(parameter, value)) << static_cast<int>(parameter) << ' ' << value;
            for (const std::string& value : rejected)
                EXPECT_FALSE(mayHold(parameter, value)) << static_cast<int>(parameter) << ' ' << value;
        }
    }
}

} // namespace
