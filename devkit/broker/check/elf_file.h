/** What a shared library says of itself, read from its ELF file; nothing of it is loaded or run. */
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

struct ElfSymbol {
    std::string name;    // mangled where it is
    std::string kind;    // FUNC, OBJECT, TLS, as readelf says it; of an import mostly NOTYPE
    std::string version; // what an import asks for, as GLIBC_2.34; empty: without
    bool weak = false;

    bool operator==(const ElfSymbol&) const = default;
};

/** Bytes as `size` counts them. */
struct ElfSize {
    std::uint64_t text = 0;
    std::uint64_t data = 0;
    std::uint64_t bss = 0;
};

struct ElfFile {
    int bits = 0;    // 32 or 64
    int machine = 0; // EM_...
    bool hard_float = false;
    std::vector<ElfSymbol> exports;
    std::vector<ElfSymbol> imports;
    std::vector<std::string> needed;   // libraries, in the order of loading
    std::vector<std::string> versions; // of needed libraries, as GLIBC_2.34
    std::optional<std::string> library_path;
    bool relro = false;
    bool bind_now = false;
    bool text_relocations = false;
    bool executable_stack = true; // until the file says otherwise
    ElfSize size;
    std::optional<std::string> version; // behind "syscmd "
};

/** A file that is no shared library, or not a whole one; the text goes on behind "it ". */
class NotALibrary : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/**
 * Reads a file that anybody may have made: what is damaged is refused.
 *
 * @throws NotALibrary
 * @throws BadUse  when the file cannot be read
 */
ElfFile read_elf(const std::string& path);
