#pragma once
#include <cstdint>

#include "book/bookBoard.h"

// The file layout of a CTG book, shared by the reader and the book writer.
// The .ctg is made of pages; page 0 is a header and data page p lies at
// (p + 1) * pageSize. A data page starts with its entry count and the bytes
// in use (2 bytes each, the header counted), followed by the entries: the
// position's encoding, its moves block (its own length, then a move byte and
// an annotation byte per move) and the statistics. The .cto holds a table
// header and then 4-byte data-page numbers, in slots by levels of the hash.
// All numbers are big-endian.
namespace ctg {
inline constexpr int pageSize = 4096;
inline constexpr int pageHeaderSize = 4;
inline constexpr int gameCountOffset = 28;  // in the header page
inline constexpr int statisticsSize = 33;
// Offsets of the 3-byte counts in the statistics. The counts are of the
// stored position, where White is always to move.
inline constexpr int gamesOffset = 0;
inline constexpr int winsToMoveOffset = 3;
inline constexpr int winsJustMovedOffset = 6;
inline constexpr int drawsOffset = 9;
inline constexpr int tableHeaderSize = 16;
inline constexpr uint32_t emptySlot = 0xFFFFFFFF;
// The first four bytes of the .cto and of the .ctb in ChessBase's books,
// of unknown meaning. The .ctb goes on with the lowest and the highest
// table slot that readers walk, then a bitmap of the .ctg's pages in use.
inline constexpr uint32_t tableTag = 0x00100001;
inline constexpr uint32_t pageMapTag = 0x000c0001;
}  // namespace ctg

// A position as a CTG book stores it: always White to move (colours and
// ranks flipped when Black is to move), files mirrored when no castling right
// is left and the king stands on files a to d, and encoded as bytes.
class ctgPosition {
public:
    static constexpr int maxEncodingLength = 31;
    static constexpr char unusedByte = 0;

    // What a move byte names in the stored position: the ordinal-th white
    // piece of the type, counted in encoding order (a1, a2, ..., a8, b1, ...),
    // and a step in files and ranks that wraps around the board. A piece of
    // unusedByte: the byte names no move.
    struct moveMeaning {
        char piece;
        int8_t ordinal, dx, dy;
    };

    bookBoard real;    // as given
    bookBoard stored;  // normalised
    bool flipped;
    bool mirrored;
    uint8_t encoding[maxEncodingLength];
    int length;

    // False when the text is not a position or its encoding would not fit.
    bool setup(const char* fen);
    uint32_t hash() const { return hash(encoding, length); }
    static uint32_t hash(const uint8_t* bytes, int count);

    // The legal move of the real position that a stored move byte names;
    // false when it names none. promotion is 'q' or 0: the format stores no other.
    bool decodeMove(uint8_t code, int& from, int& to, char& promotion) const;
    // The byte for a move of the real position, or -1 when the format cannot
    // store it (under-promotions, a third piece of a kind).
    int encodeMove(int from, int to, char promotion) const;
    static const moveMeaning& meaning(uint8_t code);
    // The lowest byte that names the step (taken modulo 8) of the ordinal-th
    // white piece of the type, or -1.
    static int moveByte(char piece, int ordinal, int dx, int dy);

private:
    // The square of one frame in the other; the change is its own inverse.
    int otherFrame(int square) const {
        return squareOf(mirrored ? 7 - fileOf(square) : fileOf(square), flipped ? 7 - rankOf(square) : rankOf(square));
    }
    bool encode();
};
