#include "tools/fuzz/targets.h"

#include <glib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

static std::map<std::string, Target>& targets()
{
    static std::map<std::string, Target> all;
    return all;
}

Registered::Registered(const char* name, Target target)
{
    targets()[name] = target;
}

void expectSame(const std::string& actual, const std::string& expected, const char* what)
{
    if (actual != expected) {
        std::fprintf(
            stderr, "%s:\n%s\n-- instead of:\n%s\n", what, actual.c_str(), expected.c_str()
        );
        std::abort();
    }
}

std::vector<std::string> fieldsOf(const std::string& input, std::size_t count)
{
    std::vector<std::string> fields(1);
    for (const char one : input) {
        if (one == '\n' && fields.size() < count) {
            fields.emplace_back();
        } else {
            fields.back() += one;
        }
    }
    fields.resize(count);
    for (std::string& field : fields) {
        field = read(field);
    }
    return fields;
}

std::string decodedBytes(const std::string& base64)
{
    gsize length = 0;
    guchar* bytes = g_base64_decode(base64.c_str(), &length);
    const std::string text(reinterpret_cast<char*>(bytes), length);
    g_free(bytes);
    return text;
}

std::string decoded(const std::string& base64)
{
    return read(decodedBytes(base64));
}

std::vector<std::string> pairOf(const std::string& base64)
{
    const std::string text = decoded(base64);
    const std::size_t colon = text.find(':');
    return colon == text.npos ? std::vector<std::string>()
                              : std::vector{text.substr(0, colon), text.substr(colon + 1)};
}

std::string owned(char* text)
{
    const std::string copy = text != nullptr ? text : "(null)";
    std::free(text);
    return copy;
}

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += '[' + line + "]\n";
    }
    return text;
}

#ifdef FUZZER // its main() chooses the inputs
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Target target = targets().at(std::getenv("FUZZ_TARGET"));
    target({reinterpret_cast<const char*>(data), size});
    return 0;
}
#else
static void replay(const std::string& folder, Target target)
{
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::fprintf(stderr, "%s\n", entry.path().c_str());
        std::ifstream file(entry.path());
        target({std::istreambuf_iterator<char>(file), {}});
    }
}
/** Replays a corpus: a folder of files for each target; one of X_strict takes X's, too. */
int main(int, char** arguments)
{
    for (const auto& [name, target] : targets()) {
        const std::string folder = std::string(arguments[1]) + '/' + name;
        replay(folder, target);
        if (folder.ends_with("_strict")) {
            replay(folder.substr(0, folder.size() - strlen("_strict")), target);
        }
    }
}
#endif
