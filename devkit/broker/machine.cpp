#include "devkit/broker/machine.h"

#include <elf.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>

namespace {

/** What of both headers, of 32 and of 64 bits, stands at the same place. */
struct Start {
    unsigned char ident[EI_NIDENT];
    Elf32_Half type;
    Elf32_Half machine;
};

/** What a file begins with, zeroes behind its end; nothing when it cannot be opened. */
std::optional<Start> start_of(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    Start start = {};
    file.read(reinterpret_cast<char*>(&start), sizeof start);
    return start;
}

std::string name_of(Elf32_Half machine)
{
    constexpr struct {
        Elf32_Half machine;
        const char* name;
    } NAMES[] = {
        {EM_386, "32-bit x86"},     {EM_X86_64, "64-bit x86"}, {EM_ARM, "32-bit ARM"},
        {EM_AARCH64, "64-bit ARM"}, {EM_MIPS, "MIPS"},         {EM_PPC, "PowerPC"},
    };
    const auto* known =
        std::find_if(std::begin(NAMES), std::end(NAMES), [machine](const auto& one) {
            return one.machine == machine;
        });
    return known != std::end(NAMES) ? known->name : "machine " + std::to_string(machine);
}

} // namespace

std::string machine_complaint(const std::string& path)
{
    const auto start = start_of(path);
    const auto own = start_of("/proc/self/exe");
    if (!start) {
        return "";
    }
    if (std::memcmp(start->ident, ELFMAG, SELFMAG) != 0) {
        return "is no shared library";
    }
    if (own && start->machine != own->machine) {
        return "is for " + name_of(start->machine) + ", and this broker for " +
               name_of(own->machine);
    }
    return "";
}
