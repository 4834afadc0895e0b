#include "tests/syscmd/device.h"

#include "devkit/boxwelld/seed.h"
#include "devkit/boxwelld/transcript.h"

#include <dlfcn.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

const Paths PATHS;
constexpr const char* LOG_FILE = "/var/log/shbroker.log";
std::string readFile(const std::string& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

void (*pluginEntry())(ITransaction*)
{
    static void* const plugin = dlopen(isStrict() ? STRICT_PLUGIN_PATH : PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    if (plugin == nullptr)
        throw std::runtime_error(dlerror());
    static void* const entry = dlsym(plugin, "execute");
    return reinterpret_cast<void (*)(ITransaction*)>(entry);
}

bool isStrict()
{
    return std::string_view(program_invocation_short_name).ends_with("_strict");
}

std::string shell(const std::string& command, int expected_status)
{
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    std::array<char, 4096> chunk;
    while (std::size_t got = fread(chunk.data(), 1, chunk.size(), pipe.get()))
        output.append(chunk.data(), got);
    const int status = pclose(pipe.release());
    EXPECT_EQ(WEXITSTATUS(status), expected_status) << command << "\n" << output;
    return output;
}

void resetDevice()
{
    shell("cd /var/lib/device && { [ -d fresh ] || { mkdir fresh && cp -r info fresh && "
          "cp /opt/skyhold/etc/registration.conf /opt/linkhub/etc/linkagent.conf fresh; }; } && "
          "chattr -fi /opt/skyhold/etc/local_sessions/* ; "
          "rm -rf info events.jsonl /opt/skyhold/etc /var/log/shbroker.log && mkdir "
          "/opt/skyhold/etc && "
          "cp -r fresh/info . && cp fresh/registration.conf /opt/skyhold/etc && cp fresh/linkagent.conf "
          "/opt/linkhub/etc && "
          ": > /var/log/shbroker.log && boxwelld seed " SEED_FILE);
    journalStatements();
}

std::string base64(const std::string& text)
{
    const std::unique_ptr<gchar, void (*)(gpointer)> encoded(
        g_base64_encode(reinterpret_cast<const guchar*>(text.data()), text.size()), g_free);
    return encoded.get();
}

void command(RecordingTransaction& transaction)
{
    transaction.on_effect = [](const std::string& effect) {
        std::ofstream(LOG_FILE, std::ios::app) << "\n= " << effect;
    };
    pluginEntry()(&transaction);
}

std::vector<Statement> fileStatements()
{
    return statementsOf(readFile(LOG_FILE));
}

void emptyLogFile()
{
    std::ofstream(LOG_FILE).close();
}

std::vector<Statement> journalStatements()
{
    static const std::map<std::string, const char*> levels = {{"3", "ERROR"}, {"6", "INFO"}, {"7", "DEBUG"}};
    static std::string cursor;
    const std::string after = cursor.empty() ? "" : " --after-cursor='" + cursor + "'";
    std::istringstream entries(
        shell("journalctl --sync; journalctl --file \"$(find \"$DEVICE_JOURNAL\" -name '*.journal')\" "
              "--all "
              "-o json --no-pager CATEGORY=shbroker" +
              after));
    std::vector<Statement> statements;
    for (std::string line; std::getline(entries, line);) {
        const auto entry = nlohmann::json::parse(line);
        cursor = entry.at("__CURSOR");
        statements.push_back({levels.at(entry.at("PRIORITY")), entry.at("CODE_FILE"),
            std::stoi(entry.at("CODE_LINE").get<std::string>()), entry.at("CODE_FUNC"), entry.at("MESSAGE")});
    }
    return statements;
}

std::vector<Answered> exchanges()
{
    std::vector<Answered> all;
    for (const auto& one : nlohmann::json::parse(transcript(PATHS, 1, true)))
        all.push_back({one.at("request"), one.at("reply").is_null() ? "" : one.at("reply").get<std::string>()});
    return all;
}
