/** What a device, or the desk, offers a plug-in. */
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/** The newest version of a library's symbols: `prefix` GLIBC_, `newest` 2.34. */
struct VersionLimit {
    std::string prefix;
    std::string newest;
};

struct Profile {
    std::string name;
    std::string machine_name; // for people
    int bits = 0;             // 32 or 64
    int machine = 0;          // EM_...
    std::vector<VersionLimit> versions;
    std::string loader;                // the dynamic loader's name
    std::optional<std::size_t> budget; // bytes of text, data and bss; nothing: not limited
};

/** Every profile; the first of a machine is its default. */
const std::vector<Profile>& profiles();

/** The profile of that name, or null. */
const Profile* profile_named(const std::string& name);

/** The default for a machine, or null. */
const Profile* profile_for(int machine);

/** The libraries that a plug-in may need beside the profile's loader, by their DT_SONAME. */
const std::vector<std::string>& allowed_libraries();
