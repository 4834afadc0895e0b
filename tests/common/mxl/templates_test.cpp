// The request templates, row by row: byte for byte against golden files, exported, and XML once they are
// filled in.
#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>

namespace {

/** Every row of the header: the text that its name points to. */
std::map<std::string, const char* const*> rows;
struct Row {
    Row(const char* name, const char* const* text) { rows[name] = text; }
};

} // namespace

#define MXL_TEMPLATE(name, text)                                                                                       \
    EXPORTED extern const char* const name;                                                                            \
    static const Row name##_row(#name, &name)
#include "common/mxl_templates.h"

namespace {

std::string content(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Templates, AreTheGoldenFiles)
{
    std::map<std::string, std::string> golden;
    for (const auto& file : std::filesystem::directory_iterator(GOLDEN_DIR))
        golden[file.path().stem()] = content(file.path());
    std::map<std::string, std::string> texts;
    for (const auto& [name, text] : rows)
        texts[name] = *text;
    EXPECT_EQ(texts, golden);
}

TEST(Templates, AreExported)
{
    const std::string map = content(EXPORTS_MAP);
    const std::size_t begin = map.find("# Request templates");
    const std::string listed = map.substr(begin, map.find('#', begin + 1) - begin);
    for (const auto& [name, text] : rows)
        EXPECT_NE(listed.find(' ' + name + ';'), std::string::npos) << name;
    EXPECT_EQ(static_cast<std::size_t>(std::count(listed.begin(), listed.end(), ';')), rows.size());
}

TEST(Templates, ParseOnceFilledIn)
{
    for (const auto& [name, text] : rows) {
        std::string request = *text;
        for (std::size_t at = 0; (at = request.find("%s", at)) != std::string::npos; ++at)
            request.replace(at, 2, "1");
        request.erase(0, request.find("<?xml"));
        const std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> document(
            xmlReadMemory(request.data(), static_cast<int>(request.size()), name.c_str(), nullptr, 0), xmlFreeDoc);
        ASSERT_NE(document, nullptr) << name;
        EXPECT_STREQ(reinterpret_cast<const char*>(xmlDocGetRootElement(document.get())->name), "mxl");
    }
}

} // namespace
