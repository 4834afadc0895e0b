#include "devkit/boxwelld/command_line.h"

#include "devkit/on_device.h"

#include <fcntl.h>

#include <cstdio>
#include <limits>

CLI::Option* add_file_option(
    CLI::App& app, const char* option, std::string& path, const char* variable, const char* what
)
{
    return app.add_option(option, path, what)->envname(variable)->capture_default_str();
}

void expect_device_or(std::initializer_list<const CLI::Option*> files)
{
    for (const CLI::Option* file : files) {
        if (file->empty() && !on_device()) {
            throw BadUse(no_device(file->get_name()));
        }
    }
}

Store open_store(const Files& files)
{
    expect_device_or({files.state, files.passwd, files.group});
    return Store(files.paths);
}

void expect_state(const Files& files)
{
    expect_device_or({files.state});
    open_file(files.paths.database(), O_RDONLY);
}

CLI::Range at_least(int least)
{
    return {least, std::numeric_limits<int>::max()};
}

void print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}
