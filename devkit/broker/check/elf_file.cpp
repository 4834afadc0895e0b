#include "devkit/broker/check/elf_file.h"

#include "devkit/broker/check/arm_attributes.h"
#include "devkit/broker/command.h"

#include <fcntl.h>
#include <gelf.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>

namespace {

constexpr std::string_view VERSION_MARK = "syscmd ";

/** A file that is open. */
class Descriptor {
  public:
    explicit Descriptor(const std::string& path) : fd_(open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        struct stat status = {};
        if (fd_ < 0 || fstat(fd_, &status) != 0) {
            throw BadUse("cannot read " + path + ": " + std::strerror(errno));
        }
        if (!S_ISREG(status.st_mode)) {
            close(fd_);
            throw BadUse(path + " is no regular file");
        }
        size_ = static_cast<std::size_t>(status.st_size);
    }
    ~Descriptor() { close(fd_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }
    std::size_t size() const { return size_; }

  private:
    int fd_;
    std::size_t size_ = 0;
};

template<class T> T* whole(T* part)
{
    if (part == nullptr) {
        throw NotALibrary("is damaged or cut short: " + std::string(elf_errmsg(-1)));
    }
    return part;
}

/** Takes an ELF file apart, a part a function. */
class Reader {
  public:
    explicit Reader(const std::string& path)
        : file_(path),
          elf_((elf_version(EV_CURRENT), elf_begin(file_.get(), ELF_C_READ, nullptr)), elf_end)
    {
    }

    ElfFile read()
    {
        header();
        segments();
        sections();
        if (dynamic_ == nullptr || symbols_ == nullptr) {
            throw NotALibrary("has no dynamic symbols");
        }
        dynamic();
        version_needs();
        symbols();
        return std::move(result_);
    }

  private:
    void header();
    void segments();
    void sections();
    void section(Elf_Scn* section);
    void dynamic();
    void dynamic_entry(const GElf_Dyn& entry, std::size_t strings);
    void version_needs();
    void symbols();
    void arm_attributes(Elf_Scn* section);
    void find_version(Elf_Scn* section);
    static std::string_view bytes_of(Elf_Scn* section);

    /** Refuses what ends behind the file's end. */
    void inside(GElf_Off offset, GElf_Xword size) const
    {
        if (offset > file_.size() || size > file_.size() - offset) {
            throw NotALibrary("is cut short: it goes on behind its last byte");
        }
    }
    GElf_Shdr header_of(Elf_Scn* section) const
    {
        GElf_Shdr header;
        return *whole(gelf_getshdr(section, &header));
    }
    std::string text(std::size_t section, GElf_Xword offset) const
    {
        inside(0, offset);
        return whole(elf_strptr(elf_.get(), section, static_cast<std::size_t>(offset)));
    }
    std::size_t entries(const Elf_Data* data, Elf_Type type) const
    {
        return data->d_size / gelf_fsize(elf_.get(), type, 1, EV_CURRENT);
    }

    Descriptor file_;
    std::unique_ptr<Elf, decltype(&elf_end)> elf_;
    ElfFile result_;
    bool float_abi_is_told_ = false; // by the header's flags
    Elf_Scn* dynamic_ = nullptr;
    Elf_Scn* symbols_ = nullptr;
    Elf_Scn* symbol_versions_ = nullptr;
    Elf_Scn* version_needs_ = nullptr;
    std::vector<std::pair<int, std::string>> version_names_; // by the number that symbols have
};

void Reader::header()
{
    if (!elf_ || elf_kind(elf_.get()) != ELF_K_ELF) {
        throw NotALibrary("is no ELF file");
    }
    GElf_Ehdr header;
    whole(gelf_getehdr(elf_.get(), &header));
    if (header.e_type != ET_DYN) {
        throw NotALibrary("is an ELF file, but no shared library");
    }
    if (header.e_shoff == 0) {
        throw NotALibrary("has no section headers");
    }
    inside(header.e_shoff, std::size_t{header.e_shnum} * header.e_shentsize);
    result_.bits = gelf_getclass(elf_.get()) == ELFCLASS32 ? 32 : 64;
    result_.machine = header.e_machine;
    if (header.e_machine == EM_ARM) {
        result_.hard_float = (header.e_flags & EF_ARM_ABI_FLOAT_HARD) != 0;
        float_abi_is_told_ = result_.hard_float || (header.e_flags & EF_ARM_ABI_FLOAT_SOFT) != 0;
    }
}

void Reader::segments()
{
    std::size_t count = 0;
    if (elf_getphdrnum(elf_.get(), &count) != 0) {
        count = 0;
    }
    for (std::size_t i = 0; i < count; ++i) {
        GElf_Phdr header;
        whole(gelf_getphdr(elf_.get(), static_cast<int>(i), &header));
        inside(header.p_offset, header.p_filesz);
        if (header.p_type == PT_GNU_RELRO) {
            result_.relro = true;
        } else if (header.p_type == PT_GNU_STACK) {
            result_.executable_stack = (header.p_flags & PF_X) != 0;
        }
    }
}

void Reader::sections()
{
    Elf_Scn* each = nullptr;
    while ((each = elf_nextscn(elf_.get(), each)) != nullptr) {
        section(each);
    }
}

void Reader::section(Elf_Scn* section)
{
    const GElf_Shdr header = header_of(section);
    if (header.sh_type != SHT_NOBITS && header.sh_type != SHT_NULL) {
        inside(header.sh_offset, header.sh_size);
    }
    switch (header.sh_type) {
    case SHT_DYNAMIC:
        dynamic_ = section;
        break;
    case SHT_DYNSYM:
        symbols_ = section;
        break;
    case SHT_GNU_versym:
        symbol_versions_ = section;
        break;
    case SHT_GNU_verneed:
        version_needs_ = section;
        break;
    case SHT_ARM_ATTRIBUTES:
        arm_attributes(section);
        break;
    default:
        break;
    }
    if ((header.sh_flags & SHF_ALLOC) == 0) {
        return;
    }
    const bool writable = (header.sh_flags & SHF_WRITE) != 0;
    auto& size = result_.size;
    (header.sh_type == SHT_NOBITS ? size.bss : writable ? size.data : size.text) += header.sh_size;
    if (header.sh_type == SHT_PROGBITS && !writable) {
        find_version(section);
    }
}

std::string_view Reader::bytes_of(Elf_Scn* section)
{
    const Elf_Data* data = whole(elf_rawdata(section, nullptr));
    return {static_cast<const char*>(data->d_buf), data->d_buf ? data->d_size : 0};
}

/** What tells where the header's flags do not, as with old linkers. */
void Reader::arm_attributes(Elf_Scn* section)
{
    if (result_.machine == EM_ARM && !float_abi_is_told_) {
        result_.hard_float = says_hard_float(bytes_of(section));
    }
}

void Reader::find_version(Elf_Scn* section)
{
    const std::string_view bytes = bytes_of(section);
    for (std::size_t mark = bytes.find(VERSION_MARK); mark != bytes.npos;
         mark = bytes.find(VERSION_MARK, mark + 1)) {
        const auto behind = bytes.substr(mark + VERSION_MARK.size());
        const auto version = behind.substr(0, behind.find_first_not_of("0123456789."));
        if (!version.empty() && behind.size() > version.size() && behind[version.size()] == '\0') {
            result_.version = version;
        }
    }
}

void Reader::dynamic()
{
    Elf_Data* data = whole(elf_getdata(dynamic_, nullptr));
    const std::size_t strings = header_of(dynamic_).sh_link;
    for (std::size_t i = 0; i < entries(data, ELF_T_DYN); ++i) {
        GElf_Dyn entry;
        whole(gelf_getdyn(data, static_cast<int>(i), &entry));
        if (entry.d_tag == DT_NULL) {
            return;
        }
        dynamic_entry(entry, strings);
    }
}

void Reader::dynamic_entry(const GElf_Dyn& entry, std::size_t strings)
{
    const auto value = entry.d_un.d_val;
    switch (entry.d_tag) {
    case DT_NEEDED:
        result_.needed.push_back(text(strings, value));
        break;
    case DT_RPATH:
    case DT_RUNPATH:
        result_.library_path = text(strings, value);
        break;
    case DT_TEXTREL:
        result_.text_relocations = true;
        break;
    case DT_BIND_NOW:
        result_.bind_now = true;
        break;
    case DT_FLAGS:
        result_.text_relocations = result_.text_relocations || (value & DF_TEXTREL) != 0;
        result_.bind_now = result_.bind_now || (value & DF_BIND_NOW) != 0;
        break;
    case DT_FLAGS_1:
        result_.bind_now = result_.bind_now || (value & DF_1_NOW) != 0;
        break;
    default:
        break;
    }
}

void Reader::version_needs()
{
    if (version_needs_ == nullptr) {
        return;
    }
    Elf_Data* data = whole(elf_getdata(version_needs_, nullptr));
    const std::size_t strings = header_of(version_needs_).sh_link;
    std::size_t most = data->d_size; // a chain that overlaps itself is damaged: it would be long
    GElf_Verneed need;
    for (std::size_t at = 0;; at += need.vn_next) {
        whole(gelf_getverneed(data, static_cast<int>(at), &need));
        GElf_Vernaux version;
        for (std::size_t aux = at + need.vn_aux;; aux += version.vna_next) {
            whole(gelf_getvernaux(data, static_cast<int>(aux), &version));
            version_names_.emplace_back(
                version.vna_other & 0x7fff, text(strings, version.vna_name)
            );
            result_.versions.push_back(version_names_.back().second);
            if (most-- == 0) {
                throw NotALibrary("is damaged: its list of versions has no end");
            }
            if (version.vna_next == 0) {
                break;
            }
        }
        if (need.vn_next == 0) {
            return;
        }
    }
}

std::string kind_of(unsigned char info)
{
    switch (GELF_ST_TYPE(info)) {
    case STT_FUNC:
        return "FUNC";
    case STT_OBJECT:
        return "OBJECT";
    case STT_TLS:
        return "TLS";
    case STT_GNU_IFUNC:
        return "IFUNC";
    default:
        return "NOTYPE";
    }
}

void Reader::symbols()
{
    Elf_Data* data = whole(elf_getdata(symbols_, nullptr));
    Elf_Data* versions =
        symbol_versions_ == nullptr ? nullptr : whole(elf_getdata(symbol_versions_, nullptr));
    const std::size_t strings = header_of(symbols_).sh_link;
    for (std::size_t i = 1; i < entries(data, ELF_T_SYM); ++i) {
        GElf_Sym symbol;
        whole(gelf_getsym(data, static_cast<int>(i), &symbol));
        const auto bind = GELF_ST_BIND(symbol.st_info);
        if (bind == STB_LOCAL) {
            continue;
        }
        ElfSymbol entry = {
            text(strings, symbol.st_name), kind_of(symbol.st_info), "", bind == STB_WEAK};
        if (symbol.st_shndx != SHN_UNDEF) {
            result_.exports.push_back(std::move(entry));
            continue;
        }
        GElf_Versym number = 0;
        if (versions != nullptr) {
            whole(gelf_getversym(versions, static_cast<int>(i), &number));
        }
        const auto name =
            std::find_if(version_names_.begin(), version_names_.end(), [number](const auto& pair) {
                return pair.first == (number & 0x7fff);
            });
        entry.version = name == version_names_.end() ? "" : name->second;
        result_.imports.push_back(std::move(entry));
    }
}

} // namespace

ElfFile read_elf(const std::string& path)
{
    return Reader(path).read();
}
