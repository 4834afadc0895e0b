#include "devkit/broker/check/rules.h"

#include "devkit/broker/check/exports.h"

#include <elf.h>

#include <algorithm>
#include <charconv>

namespace {

Row row(const char* name, std::string found, bool good, Finding finding)
{
    return {name, std::move(found), good ? std::nullopt : std::optional(std::move(finding))};
}

std::string machine_name(const ElfFile& file)
{
    const Profile* known = profile_for(file.machine);
    if (known == nullptr || known->bits != file.bits) {
        return std::to_string(file.bits) + "-bit machine number " + std::to_string(file.machine);
    }
    return file.machine == EM_ARM && !file.hard_float ? "32-bit ARM, soft float"
                                                      : known->machine_name;
}

bool starts_with(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

/** "2.34" as {2, 34}; empty: it is no such number. */
std::vector<int> numbers(const std::string& text)
{
    std::vector<int> all;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (true) {
        int number = 0;
        const auto [next, error] = std::from_chars(at, end, number);
        if (error != std::errc() || (next != end && *next != '.')) {
            return {};
        }
        all.push_back(number);
        if (next == end) {
            return all;
        }
        at = next + 1;
    }
}

const VersionLimit* limit_of(const std::string& version, const Profile& profile)
{
    const auto limit = std::find_if(
        profile.versions.begin(), profile.versions.end(),
        [&](const VersionLimit& each) { return starts_with(version, each.prefix); }
    );
    return limit == profile.versions.end() ? nullptr : &*limit;
}

Row versions_row(const ElfFile& file, const Profile& profile)
{
    Texts newest;
    Texts too_new;
    for (const VersionLimit& limit : profile.versions) {
        std::string most;
        for (const std::string& version : file.versions) {
            if (limit_of(version, profile) != &limit) {
                continue;
            }
            const auto number = numbers(version.substr(limit.prefix.size()));
            if (number.empty() || number > numbers(limit.newest)) {
                too_new.push_back(version);
            }
            if (most.empty() || number > numbers(most.substr(limit.prefix.size()))) {
                most = version;
            }
        }
        if (!most.empty()) {
            newest.push_back(most);
        }
    }
    Texts offered;
    for (const VersionLimit& limit : profile.versions) {
        offered.push_back(limit.prefix + limit.newest);
    }
    return row(
        "versions", joined(newest), too_new.empty(),
        {"asks for " + joined(too_new) + "; the profile has " + joined(offered),
         "the loader refuses a library whose versions the C or C++ library does not have",
         "build with the device's toolchain and sysroot, or with ones that are no newer"}
    );
}

Row needed_row(const ElfFile& file, const Profile& profile)
{
    Texts surplus;
    for (const std::string& library : file.needed) {
        const auto& allowed = allowed_libraries();
        if (library != profile.loader &&
            std::find(allowed.begin(), allowed.end(), library) == allowed.end()) {
            surplus.push_back(library);
        }
    }
    return row(
        "needed", joined(file.needed), surplus.empty(),
        {"a device has no " + joined(surplus),
         "the loader refuses a library when one that it needs is not there",
         "link what is wanted of it into the plug-in, or do without; -Wl,--as-needed leaves out "
         "what is not used"}
    );
}

/** Imports that no version ties to a library, and that are neither GLib's nor optional. */
Texts loose_imports(const ElfFile& file)
{
    Texts loose;
    for (const ElfSymbol& symbol : file.imports) {
        if (symbol.version.empty() && !symbol.weak && !starts_with(symbol.name, "g_")) {
            loose.push_back(symbol.name);
        }
    }
    return loose;
}

Row client_row(const ElfFile& file)
{
    const Texts loose = loose_imports(file);
    const bool linked =
        std::find(file.needed.begin(), file.needed.end(), "libbwdclient.so") != file.needed.end();
    return row(
        "client library", joined(loose) + (linked ? "" : ", libbwdclient.so is not needed"),
        linked && loose == Texts{"process_request_bwdclient"},
        {"libbwdclient.so is to be needed, for process_request_bwdclient and nothing else",
         "that is the one call which the device's client library has; another one, or one that no "
         "needed library has, is not found when the broker loads the plug-in",
         "link with -lbwdclient and -Wl,--no-undefined, and define or remove the other names"}
    );
}

bool has_canaries(const ElfFile& file)
{
    return std::any_of(file.imports.begin(), file.imports.end(), [](const ElfSymbol& symbol) {
        return symbol.name == "__stack_chk_fail";
    });
}

bool has_checked_calls(const ElfFile& file)
{
    return std::any_of(file.imports.begin(), file.imports.end(), [](const ElfSymbol& symbol) {
        constexpr std::size_t LENGTH = 4;
        return symbol.name.size() > LENGTH && starts_with(symbol.name, "__") &&
               symbol.name.compare(symbol.name.size() - LENGTH, LENGTH, "_chk") == 0;
    });
}

Row hardening_row(
    const char* name,
    bool good,
    const Finding& finding,
    const char* as_it_should_be = "yes",
    const char* otherwise = "no"
)
{
    return row(name, good ? as_it_should_be : otherwise, good, finding);
}

std::vector<Row> compiled_rows(const ElfFile& file)
{
    return {
        hardening_row(
            "stack canaries", has_canaries(file),
            {"__stack_chk_fail is not called", "an overrun of a buffer on the stack goes unseen",
             "compile with -fstack-protector-strong"}
        ),
        hardening_row(
            "checked calls", has_checked_calls(file),
            {"no checked call of the C library (__snprintf_chk and its like) is made",
             "a call that writes more than its buffer holds goes unseen",
             "compile with -O1 or higher and -D_FORTIFY_SOURCE=2"}
        ),
    };
}

std::vector<Row> linked_rows(const ElfFile& file)
{
    return {
        hardening_row(
            "relro", file.relro,
            {"there is no GNU_RELRO segment",
             "tables of functions stay writable in a process that runs as root",
             "link with -Wl,-z,relro"}
        ),
        hardening_row(
            "bind now", file.bind_now,
            {"calls are bound when they are first made",
             "the table of calls stays writable, and a missing function is found in the middle of "
             "a command",
             "link with -Wl,-z,now"}
        ),
        hardening_row(
            "text relocations", !file.text_relocations,
            {"code is relocated when it is loaded",
             "code is writable meanwhile, and no two processes share it",
             "compile everything with -fPIC and link with -Wl,-z,text"},
            "none", "some"
        ),
        row("library path", file.library_path.value_or("none"), !file.library_path,
            {"the file names folders to look for libraries in",
             "on a device whoever can write there has code run as root, and folders of a build "
             "machine mean nothing",
             "link without -Wl,-rpath, with CMake SKIP_BUILD_RPATH, or remove it: patchelf "
             "--remove-rpath"}),
        hardening_row(
            "executable stack", !file.executable_stack,
            {"the file asks for a stack that can be executed, or does not say that it needs none",
             "the loader makes the whole process's stack executable, or refuses the library",
             "link with -Wl,-z,noexecstack; an assembler file says .section .note.GNU-stack"},
            "no", "yes"
        ),
    };
}

Row size_row(const ElfFile& file, const Profile& profile)
{
    const auto& size = file.size;
    const std::uint64_t sum = size.text + size.data + size.bss;
    const std::size_t budget = profile.budget.value_or(sum);
    const std::string limit = profile.budget ? " of " + std::to_string(budget) : "";
    return row(
        "size",
        std::to_string(sum) + limit + " bytes (text " + std::to_string(size.text) + ", data " +
            std::to_string(size.data) + ", bss " + std::to_string(size.bss) + ')',
        sum <= budget,
        {std::to_string(sum - budget) + " bytes over the budget",
         "the device has no more room for it",
         "build for size (the preset armhf: -Os, link-time optimisation, sections that nothing "
         "uses removed); the strict plug-in has a profile of its own, armhf-strict"}
    );
}

Row version_row(const ElfFile& file)
{
    return row(
        "version", file.version.value_or("none"), file.version.has_value(),
        {"there is no text \"syscmd VERSION\" in the read-only data",
         "who has the file alone cannot tell which release it is",
         "build from this project's sources, and keep the text when sections are removed"}
    );
}

} // namespace

Row machine_row(const ElfFile& file, const Profile& profile)
{
    const std::string found = machine_name(file);
    return row(
        "machine", found, found == profile.machine_name,
        {"the profile " + profile.name + " is of a " + profile.machine_name + " machine",
         "the loader refuses a library of another machine; with another float ABI numbers would be "
         "passed in other registers",
         "build with a toolchain for " + profile.machine_name +
             " (arm-linux-gnueabihf for a device), or choose another --profile"}
    );
}

std::vector<Row> loading_rows(const ElfFile& file, const Profile& profile)
{
    return {
        exports_row(file), needed_row(file, profile), versions_row(file, profile),
        client_row(file)};
}

std::vector<Row> quality_rows(const ElfFile& file, const Profile& profile)
{
    std::vector<Row> rows = linked_rows(file);
    for (Row& each : compiled_rows(file)) {
        rows.push_back(std::move(each));
    }
    rows.push_back(size_row(file, profile));
    rows.push_back(version_row(file));
    return rows;
}
