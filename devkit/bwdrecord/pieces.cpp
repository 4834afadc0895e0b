#include "devkit/bwdrecord/pieces.h"

#include "devkit/bwdrecord/pair.h"

#include <cstring>
#include <iterator>
#include <string_view>

namespace {

constexpr struct {
    std::string_view tag;
    std::string_view end;
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

/** With what the names of these elements begin: of the secrets', and of all. */
struct InitialTable {
    bool secret[256] = {};
    bool any[256] = {};

    constexpr InitialTable()
    {
        for (const auto& element : ELEMENTS) {
            const auto initial = static_cast<unsigned char>(element.tag[1]);
            any[initial] = true;
            secret[initial] = secret[initial] || element.kind == PieceKind::Secret;
        }
    }
};
constexpr InitialTable INITIALS;

constexpr std::string_view NAME_ATTRIBUTES[] = {" FullName", " UserName", " value"};
constexpr std::string_view AUTHORIZATION = "Authorization: ";
constexpr std::string_view CDATA = "<![CDATA[";

/** By the last byte first, which few others share. */
bool starts_with(const char* at, const char* end, std::string_view text)
{
    return static_cast<std::size_t>(end - at) >= text.size() &&
           at[text.size() - 1] == text.back() && std::memcmp(at, text.data(), text.size()) == 0;
}

const char* find(const char* at, const char* end, char c)
{
    return at == end
               ? nullptr
               : static_cast<const char*>(std::memchr(at, c, static_cast<std::size_t>(end - at)));
}

/** By its first byte, which is rare in what is searched: quicker than memmem() for short texts. */
const char* find(const char* at, const char* end, std::string_view text)
{
    while ((at = find(at, end, text.front())) != nullptr && !starts_with(at, end, text)) {
        ++at;
    }
    return at;
}

Piece piece_between(PieceKind kind, const char* at, const char* end)
{
    return {kind, at, static_cast<std::size_t>(end - at)};
}

/** What the element whose start tag is at `at` holds, without the marks of a CDATA section. */
bool element_at(const Pieces& in, const char* at, Piece* piece)
{
    const auto& initials = in.names ? INITIALS.any : INITIALS.secret;
    if (at + 1 == in.end || !initials[static_cast<unsigned char>(at[1])]) {
        return false; // as most tags
    }
    for (const auto& element : ELEMENTS) {
        if ((element.kind != PieceKind::Secret && !in.names) ||
            !starts_with(at, in.end, element.tag)) {
            continue;
        }
        const char* content = at + element.tag.size();
        const char* end = nullptr;
        if (starts_with(content, in.end, CDATA)) {
            content += CDATA.size();
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
    if (!starts_with(at, in.end, "=\"")) {
        return false;
    }
    for (const std::string_view name : NAME_ATTRIBUTES) {
        if (static_cast<std::size_t>(at - in.start) < name.size() ||
            !starts_with(at - name.size(), at, name)) {
            continue;
        }
        const char* content = at + 2;
        const char* end = find(content, in.end, '"');
        *piece = piece_between(PieceKind::Name, content, end != nullptr ? end : in.end);
        return piece->length > 0;
    }
    return false;
}

bool authority_at(const Pieces& in, const char* at, Piece* piece)
{
    if (at != in.start || !starts_with(at, in.end, AUTHORIZATION)) {
        return false;
    }
    const char* content = at + AUTHORIZATION.size();
    const char* end = find(content, in.end, "\r\n");
    *piece = piece_between(PieceKind::Name, content, end != nullptr ? end : in.end);
    return piece->length > 0;
}

/** The next element, name or pair from `at` on, where no run of Base64 characters has begun. */
using Find = FoundPiece(const Pieces& in, const char* at);

FoundPiece none(const Pieces& in)
{
    return {in.end, {PieceKind::Plain, in.end, 0}};
}

FoundPiece find_element(const Pieces& in, const char* at)
{
    FoundPiece found;
    while ((found.mark = find(at, in.end, '<')) != nullptr) {
        if (element_at(in, found.mark, &found.piece)) {
            return found;
        }
        at = found.mark + 1;
    }
    return none(in);
}

FoundPiece find_name(const Pieces& in, const char* at)
{
    FoundPiece found = {at, {}};
    if (!in.names) {
        return none(in);
    }
    if (authority_at(in, at, &found.piece)) {
        return found;
    }
    while ((found.mark = find(at, in.end, '=')) != nullptr) {
        if (attribute_at(in, found.mark, &found.piece)) {
            return found;
        }
        at = found.mark + 1;
    }
    return none(in);
}

FoundPiece find_pair(const Pieces& in, const char* at)
{
    const Run pair = next_pair(at, in.end);
    return pair.at == nullptr ? none(in)
                              : FoundPiece{pair.at, {PieceKind::Pair, pair.at, pair.length}};
}

constexpr Find* FINDS[] = {find_element, find_name, find_pair};

} // namespace

Pieces pieces_of(const char* text, std::size_t length, bool names)
{
    Pieces in = {text, text, text + length, names, {}};
    for (std::size_t i = 0; i < std::size(FINDS); ++i) {
        in.next[i] = FINDS[i](in, text);
    }
    return in;
}

bool next_piece(Pieces* in, Piece* piece)
{
    const FoundPiece* nearest = in->next;
    for (const FoundPiece& found : in->next) {
        nearest = found.mark < nearest->mark ? &found : nearest;
    }
    if (nearest->piece.at > in->at) {
        *piece = piece_between(PieceKind::Plain, in->at, nearest->piece.at);
        in->at = nearest->piece.at;
        return true;
    }
    if (nearest->piece.kind == PieceKind::Plain) {
        return false;
    }
    *piece = nearest->piece;
    in->at = piece->at + piece->length;
    for (std::size_t i = 0; i < std::size(FINDS); ++i) {
        if (in->next[i].mark < in->at) { // this piece, or inside it
            in->next[i] = FINDS[i](*in, in->at);
        }
    }
    return true;
}
