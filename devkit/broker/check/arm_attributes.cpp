#include "devkit/broker/check/arm_attributes.h"

#include <cstdint>
#include <optional>

namespace {

constexpr char FORMAT = 'A';
constexpr std::string_view PUBLIC = "aeabi";
constexpr std::uint64_t OF_FILE = 1;        // Tag_File
constexpr std::uint64_t CPU_RAW_NAME = 4;   // a text, as is
constexpr std::uint64_t CPU_NAME = 5;       // this one
constexpr std::uint64_t VFP_ARGUMENTS = 28; // Tag_ABI_VFP_args
constexpr std::uint64_t IN_REGISTERS = 1;   // its value: the VFP variant
constexpr std::uint64_t COMPATIBILITY = 32; // a number and a text
constexpr std::size_t LENGTH_SIZE = 4;

/** Reads on through bytes; behind their end there are zeros. */
class Cursor {
  public:
    explicit Cursor(std::string_view bytes) : bytes_(bytes) {}

    bool at_end() const { return bytes_.empty(); }

    std::uint8_t byte()
    {
        const auto value = at_end() ? 0 : static_cast<std::uint8_t>(bytes_.front());
        take(1);
        return static_cast<std::uint8_t>(value);
    }
    /** A number of seven bits a byte, the lowest first; what is above 64 bits is lost. */
    std::uint64_t number()
    {
        std::uint64_t value = 0;
        for (unsigned shift = 0;; shift += 7) {
            const std::uint8_t next = byte();
            value |= shift < 64 ? std::uint64_t{next & 0x7fU} << shift : 0;
            if ((next & 0x80) == 0) {
                return value;
            }
        }
    }
    std::string_view text()
    {
        const std::string_view found = bytes_.substr(0, bytes_.find('\0'));
        take(found.size() + 1);
        return found;
    }
    /** What a length stands before, which counts itself and `before` bytes. */
    Cursor part(std::size_t before = 0)
    {
        std::size_t length = 0;
        for (std::size_t i = 0; i < LENGTH_SIZE; ++i) {
            length |= std::size_t{byte()} << 8 * i;
        }
        const std::size_t counted = LENGTH_SIZE + before;
        return Cursor(take(length < counted ? 0 : length - counted));
    }

  private:
    std::string_view take(std::size_t count)
    {
        const std::string_view taken = bytes_.substr(0, count);
        bytes_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view bytes_;
};

/** The value of a tag that is a number, among attributes; a text's value is passed over. */
std::optional<std::uint64_t> value_of(std::uint64_t wanted, Cursor attributes)
{
    while (!attributes.at_end()) {
        const std::uint64_t tag = attributes.number();
        const bool is_text =
            tag == CPU_RAW_NAME || tag == CPU_NAME || (tag > COMPATIBILITY && tag % 2 != 0);
        const std::uint64_t value = is_text ? 0 : attributes.number();
        if (is_text || tag == COMPATIBILITY) {
            attributes.text();
        }
        if (tag == wanted) {
            return value;
        }
    }
    return std::nullopt;
}

} // namespace

bool says_hard_float(std::string_view section)
{
    Cursor content(section);
    if (content.byte() != FORMAT) {
        return false;
    }
    while (!content.at_end()) {
        Cursor vendor = content.part();
        if (vendor.text() != PUBLIC) {
            continue;
        }
        while (!vendor.at_end()) {
            const std::uint64_t scope = vendor.byte();
            const Cursor attributes = vendor.part(1);
            if (scope == OF_FILE) {
                return value_of(VFP_ARGUMENTS, attributes) == IN_REGISTERS;
            }
        }
    }
    return false;
}
