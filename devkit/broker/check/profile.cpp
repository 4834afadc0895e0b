#include "devkit/broker/check/profile.h"

#include <elf.h>

#include <algorithm>

namespace {

Profile device(const char* name, std::size_t budget)
{
    return {
        name,
        "32-bit ARM, hard float",
        32,
        EM_ARM,
        {{"GLIBC_", "2.34"},
         {"GLIBCXX_", "3.4.30"},
         {"CXXABI_ARM_", "1.3.3"},
         {"CXXABI_", "1.3.13"}},
        "ld-linux-armhf.so.3",
        budget};
}

template<class Matches> const Profile* first(Matches matches)
{
    const auto& all = profiles();
    const auto found = std::find_if(all.begin(), all.end(), matches);
    return found == all.end() ? nullptr : &*found;
}

} // namespace

const std::vector<Profile>& profiles()
{
    static const std::vector<Profile> ALL = {
        device("armhf", 46000),
        device("armhf-strict", 48000),
        {"desk",
         "64-bit x86",
         64,
         EM_X86_64,
         {{"GLIBC_", "2.36"}, {"GLIBCXX_", "3.4.30"}, {"CXXABI_", "1.3.13"}},
         "ld-linux-x86-64.so.2",
         {}},
    };
    return ALL;
}

const Profile* profile_named(const std::string& name)
{
    return first([&](const Profile& profile) { return profile.name == name; });
}

const Profile* profile_for(int machine)
{
    return first([&](const Profile& profile) { return profile.machine == machine; });
}

const std::vector<std::string>& allowed_libraries()
{
    static const std::vector<std::string> ALL = {
        "libbwdclient.so", "libglib-2.0.so.0", "libsystemd.so.0", "libcrypt.so.1",
        "libstdc++.so.6",  "libgcc_s.so.1",    "libc.so.6",       "libm.so.6",
    };
    return ALL;
}
