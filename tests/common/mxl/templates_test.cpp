// The request templates, byte by byte against golden files, and as XML once they are filled in.
#include "common/mxl_templates.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace {

struct Template {
    const char* name;
    const char* text;
};

const Template TEMPLATES[] = {
    {"UPDATE_ACCOUNT_MXL", UPDATE_ACCOUNT_MXL},
    {"RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME", RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME},
    {"RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD", RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD},
    {"RENAME_ACCOUNT_NO_PASSWORD_MXL", RENAME_ACCOUNT_NO_PASSWORD_MXL},
    {"GET_USER_DATA_MXL", GET_USER_DATA_MXL},
    {"ADD_USER_MXL", ADD_USER_MXL},
    {"MXL_TMPL_DEL_NET", MXL_TMPL_DEL_NET},
    {"MXL_TMPL_ADD_NET", MXL_TMPL_ADD_NET},
    {"MXL_TMPL_ADD_NET_INVITE", MXL_TMPL_ADD_NET_INVITE},
    {"QUERY_USER_BY_ID_MXL", QUERY_USER_BY_ID_MXL},
    {"DELETE_USER_MXL", DELETE_USER_MXL},
    {"UNREGISTER_USER_MXL", UNREGISTER_USER_MXL},
};

std::string golden(const std::string& name)
{
    std::ifstream file(GOLDEN_DIR "/" + name + ".mxl", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Templates, equalTheGoldenFiles)
{
    for (const auto& [name, text] : TEMPLATES)
        EXPECT_EQ(text, golden(name)) << name;
}

TEST(Templates, parseOnceFilledIn)
{
    for (const auto& [name, text] : TEMPLATES) {
        std::string request = text;
        for (std::size_t at = 0; (at = request.find("%s", at)) != std::string::npos; ++at)
            request.replace(at, 2, "1");
        request.erase(0, request.find("<?xml"));
        const std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> document(
            xmlReadMemory(request.data(), static_cast<int>(request.size()), name, nullptr, 0), xmlFreeDoc);
        ASSERT_NE(document, nullptr) << name;
        EXPECT_STREQ(reinterpret_cast<const char*>(xmlDocGetRootElement(document.get())->name), "mxl");
    }
}

} // namespace
