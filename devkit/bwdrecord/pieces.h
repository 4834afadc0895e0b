/**
 * The pieces of a transaction's text that a recording may not, or need not, tell as they are:
 * hashes, pairs of hashes in Base64, names. Texts are cut, not parsed, so that damaged ones are
 * covered, too: what begins as a hash and has no end is one up to the text's end.
 */
#pragma once

#include <cstddef>

enum class PieceKind {
    Plain,
    Secret, /**< what an element for a hash or password holds */
    Pair,   /**< Base64 of a text with a colon */
    Name,   /**< an account's name or e-mail address, nobody's empty one */
    Detail, /**< the daemon's reason for a refusal, in which names may stand */
};

struct Piece {
    PieceKind kind = PieceKind::Plain;
    const char* at = nullptr;
    std::size_t length = 0;
};

/** A piece that is not plain, and the mark by which it was found: the pieces come in the order of
 * their marks. */
struct FoundPiece {
    const char* mark = nullptr;
    Piece piece;
};

/** Where the reading of a text is; made by pieces_of(). */
struct Pieces {
    const char* start = nullptr;
    const char* at = nullptr;
    const char* end = nullptr;
    bool names = false;
    FoundPiece next[3]; // of each way to find one; none: a plain one, at the end
};

/** @param names  whether to tell names and details; else they are plain */
Pieces pieces_of(const char* text, std::size_t length, bool names);

/** Gives the next piece; together they are the text. False at its end. */
bool next_piece(Pieces* in, Piece* piece);

/** What is written instead of a secret. */
constexpr char SECRET_STAND_IN[] = "REDACTED";
/** Base64 of that, a colon and that: a pair that an operation takes. */
constexpr char PAIR_STAND_IN[] = "UkVEQUNURUQ6UkVEQUNURUQ=";
/** Base64 of SECRET_STAND_IN: no pair, where none was. */
constexpr char NO_PAIR_STAND_IN[] = "UkVEQUNURUQ=";
