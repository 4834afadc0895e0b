#include "devkit/bwdrecord/redacted.h"

#include "devkit/bwdrecord/pseudonym.h"

#include <glib.h>

#include <cstring>

namespace {

bool equals(const Piece& piece, const char* text)
{
    return piece.length == std::strlen(text) && std::memcmp(piece.at, text, piece.length) == 0;
}

void add_pseudonym(Text* out, const Piece& name)
{
    if (name.length == 0 || equals(name, "(null)")) {
        text_add_json(out, name.at, name.length);
        return;
    }
    char pseudonym[PSEUDONYM_SIZE];
    pseudonym_of(pseudonym, name.at, name.length);
    text_add(out, pseudonym, std::strlen(pseudonym));
}

bool is_word(char c)
{
    return g_ascii_isalnum(c) != FALSE || static_cast<unsigned char>(c) >= 0x80;
}

/** The longest name of the request that is the word, or words, at `at`; length 0: none. */
Piece name_at(const Piece& detail, std::size_t at, const Piece& request)
{
    Piece longest;
    if (at > 0 && is_word(detail.at[at - 1])) {
        return longest;
    }
    const std::size_t left = detail.length - at;
    Pieces pieces = pieces_of(request.at, request.length, true);
    for (Piece piece; next_piece(&pieces, &piece);) {
        if (piece.kind == PieceKind::Name && piece.length > longest.length &&
            piece.length <= left && std::memcmp(detail.at + at, piece.at, piece.length) == 0 &&
            (piece.length == left || !is_word(detail.at[at + piece.length]))) {
            longest = piece;
        }
    }
    return longest;
}

void add_detail(Text* out, const Piece& detail, const Piece& request)
{
    std::size_t shown = 0;
    for (std::size_t at = 0; at < detail.length;) {
        const Piece name = name_at(detail, at, request);
        if (name.length == 0) {
            ++at;
            continue;
        }
        text_add_json(out, detail.at + shown, at - shown);
        add_pseudonym(out, name);
        at += name.length;
        shown = at;
    }
    text_add_json(out, detail.at + shown, detail.length - shown);
}

} // namespace

void add_redacted(Text* out, const char* text, std::size_t length, const Piece& request)
{
    Pieces pieces = pieces_of(text, length, pseudonyms_wanted());
    for (Piece piece; next_piece(&pieces, &piece);) {
        switch (piece.kind) {
        case PieceKind::Plain:
            text_add_json(out, piece.at, piece.length);
            break;
        case PieceKind::Secret:
            text_add(out, SECRET_STAND_IN, sizeof SECRET_STAND_IN - 1);
            break;
        case PieceKind::Pair:
            text_add(out, PAIR_STAND_IN, sizeof PAIR_STAND_IN - 1);
            break;
        case PieceKind::Name:
            add_pseudonym(out, piece);
            break;
        case PieceKind::Detail:
            add_detail(out, piece, request);
            break;
        }
    }
}
