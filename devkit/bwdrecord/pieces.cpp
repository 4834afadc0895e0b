#include "devkit/bwdrecord/pieces.h"

#include <glib.h>

#include <cstring>

namespace {

/** Shorter runs of Base64 are words; the shortest pair of hashes that means something is longer. */
constexpr std::size_t SHORTEST_PAIR = 16;

constexpr struct {
    const char* tag;
    const char* end;
    PieceKind kind;
} ELEMENTS[] = {
    {"<SmbHash>", "</SmbHash", PieceKind::Secret},
    {"<SysHash>", "</SysHash", PieceKind::Secret},
    {"<Password>", "</Password", PieceKind::Secret},
    {"<User_Name>", "</User_Name", PieceKind::Name},
    {"<P2PUserName>", "</P2PUserName", PieceKind::Name},
    {"<Email_Address>", "</Email_Address", PieceKind::Name},
    {"<xs:value>", "</xs:value", PieceKind::Name},
    {"<xs:error-details>", "</xs:error-details", PieceKind::Detail},
};

/** With what the names of these elements begin. */
struct InitialTable {
    bool of[256] = {};

    constexpr InitialTable()
    {
        for (const auto& element : ELEMENTS) {
            of[static_cast<unsigned char>(element.tag[1])] = true;
        }
    }
};
constexpr InitialTable INITIALS;

constexpr const char* NAME_ATTRIBUTES[] = {" FullName", " UserName", " value"};
constexpr char AUTHORIZATION[] = "Authorization: ";
constexpr char CDATA[] = "<![CDATA[";

bool starts_with(const char* at, const char* end, const char* text)
{
    const std::size_t length = std::strlen(text);
    return static_cast<std::size_t>(end - at) >= length && std::memcmp(at, text, length) == 0;
}

const char* find(const char* at, const char* end, const char* text)
{
    return static_cast<const char*>(
        memmem(at, static_cast<std::size_t>(end - at), text, std::strlen(text))
    );
}

/** What a byte may begin. */
enum class Byte : unsigned char {
    Other,
    Base64,
    Tag,
    Value,
};

/** Of each byte, since every byte of every text is looked at. */
struct ByteTable {
    Byte of[256] = {};

    constexpr ByteTable()
    {
        constexpr char BASE64[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (const char* c = BASE64; *c != '\0'; ++c) {
            of[static_cast<unsigned char>(*c)] = Byte::Base64;
        }
        of[static_cast<unsigned char>('<')] = Byte::Tag;
        of[static_cast<unsigned char>('=')] = Byte::Value;
    }
};
constexpr ByteTable BYTES;

Byte kind_of(char c)
{
    return BYTES.of[static_cast<unsigned char>(c)];
}

Piece piece_between(PieceKind kind, const char* at, const char* end)
{
    return {kind, at, static_cast<std::size_t>(end - at)};
}

/** What the element whose start tag is at `at` holds, without the marks of a CDATA section. */
bool element_at(const Pieces& in, const char* at, Piece* piece)
{
    if (at + 1 == in.end || !INITIALS.of[static_cast<unsigned char>(at[1])]) {
        return false; // as most tags
    }
    for (const auto& element : ELEMENTS) {
        if ((element.kind != PieceKind::Secret && !in.names) ||
            !starts_with(at, in.end, element.tag)) {
            continue;
        }
        const char* content = at + std::strlen(element.tag);
        const char* end = nullptr;
        if (starts_with(content, in.end, CDATA)) {
            content += std::strlen(CDATA);
            // The end mark that the element's end follows: a value may hold others.
            for (const char* mark = content; (mark = find(mark, in.end, "]]>")) != nullptr;
                 mark += 3) {
                if (starts_with(mark + 3, in.end, element.end)) {
                    end = mark;
                    break;
                }
            }
        }
        end = end != nullptr ? end : find(content, in.end, element.end);
        *piece = piece_between(element.kind, content, end != nullptr ? end : in.end);
        return element.kind != PieceKind::Name || piece->length > 0;
    }
    return false;
}

/** The value of a name's attribute whose equals sign is at `at`. */
bool attribute_at(const Pieces& in, const char* at, Piece* piece)
{
    if (!in.names || !starts_with(at, in.end, "=\"")) {
        return false;
    }
    for (const char* name : NAME_ATTRIBUTES) {
        const std::size_t length = std::strlen(name);
        if (static_cast<std::size_t>(at - in.start) < length ||
            std::memcmp(at - length, name, length) != 0) {
            continue;
        }
        const char* content = at + 2;
        const char* end = find(content, in.end, "\"");
        *piece = piece_between(PieceKind::Name, content, end != nullptr ? end : in.end);
        return piece->length > 0;
    }
    return false;
}

bool authority_at(const Pieces& in, const char* at, Piece* piece)
{
    if (at != in.start || !in.names || !starts_with(at, in.end, AUTHORIZATION)) {
        return false;
    }
    const char* content = at + std::strlen(AUTHORIZATION);
    const char* end = find(content, in.end, "\r\n");
    *piece = piece_between(PieceKind::Name, content, end != nullptr ? end : in.end);
    return piece->length > 0;
}

/** The end of the run of Base64 characters at `at`, its padding included. */
const char* end_of_run(const char* at, const char* end)
{
    while (at < end && kind_of(*at) == Byte::Base64) {
        ++at;
    }
    for (int padding = 0; padding < 2 && at < end && *at == '='; ++padding) {
        ++at;
    }
    return at;
}

/** Finds the next piece that is not plain, from `at` on. */
bool find_special(const Pieces& in, const char* at, Piece* piece)
{
    if (authority_at(in, at, piece)) {
        return true;
    }
    while (at < in.end) {
        const Byte byte = kind_of(*at);
        if ((byte == Byte::Tag && element_at(in, at, piece)) ||
            (byte == Byte::Value && attribute_at(in, at, piece))) {
            return true;
        }
        if (byte != Byte::Base64) {
            ++at;
            continue;
        }
        const char* end = end_of_run(at, in.end);
        const auto length = static_cast<std::size_t>(end - at);
        if (length >= SHORTEST_PAIR && is_pair(at, length)) {
            *piece = piece_between(PieceKind::Pair, at, end);
            return true;
        }
        while (end > at && end[-1] == '=') {
            --end; // an attribute's
        }
        at = end;
    }
    return false;
}

} // namespace

bool is_pair(const char* text, std::size_t length)
{
    if (length < SHORTEST_PAIR || length % 4 != 0 ||
        end_of_run(text, text + length) != text + length) {
        return false;
    }
    bool colon = false;
    int state = 0;
    unsigned save = 0;
    for (std::size_t done = 0; done < length;) {
        unsigned char bytes[64];
        const std::size_t step = length - done < sizeof bytes ? length - done : sizeof bytes;
        const std::size_t count = g_base64_decode_step(text + done, step, bytes, &state, &save);
        for (std::size_t i = 0; i < count; ++i) {
            colon = colon || bytes[i] == ':';
            if (bytes[i] < ' ' || bytes[i] > '~') {
                return false;
            }
        }
        done += step;
    }
    return colon;
}

Pieces pieces_of(const char* text, std::size_t length, bool names)
{
    return {text, text, text + length, names, {}};
}

bool next_piece(Pieces* in, Piece* piece)
{
    Piece special = in->waiting;
    in->waiting = {};
    if (special.at == nullptr) {
        if (in->at == in->end) {
            return false;
        }
        if (!find_special(*in, in->at, &special)) {
            *piece = piece_between(PieceKind::Plain, in->at, in->end);
            in->at = in->end;
            return true;
        }
        if (special.at > in->at) {
            *piece = piece_between(PieceKind::Plain, in->at, special.at);
            in->at = special.at;
            in->waiting = special;
            return true;
        }
    }
    *piece = special;
    in->at = special.at + special.length;
    return true;
}
