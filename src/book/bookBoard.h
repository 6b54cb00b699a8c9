#pragma once

// A position read from FEN for the book readers. Squares count 8 * rank +
// file from a1 = 0, as both book formats do. It checks moves itself, so that
// a book probe leaves the engine's boards, key history and caches alone.
class bookBoard {
public:
    static constexpr int whiteShort = 1, whiteLong = 2, blackShort = 4, blackLong = 8;
    static constexpr int noEnPassant = -1;
    static constexpr char empty = '.';

    char piece[64];  // FEN letter, or empty
    bool whiteToMove;
    int castling;       // only rights whose king and rook still stand at home
    int enPassantFile;  // only when a pawn of the side to move stands beside the pawn that just moved

    // False for text that is not a position with one king a side and no pawn on a back rank.
    bool setup(const char* fen);
    // Castling is the king's two-square step; the promotion piece does not matter.
    bool isLegal(int from, int to) const;
    // promotion: a piece letter in either case, or 0 for a queen.
    void makeMove(int from, int to, char promotion);
    bool attacked(int square, bool byWhite) const;

private:
    bool pathClear(int from, int to) const;
    bool castlingAllowed(int from, int to) const;
    void dropLostRights();
    void keepEnPassantIfCapturable(int file);
};

inline int squareOf(int file, int rank) { return 8 * rank + file; }
inline int fileOf(int square) { return square & 7; }
inline int rankOf(int square) { return square >> 3; }

// Coordinate text such as "e2e4" or "e7e8q"; out needs 6 characters.
void bookMoveText(int from, int to, char promotion, char* out);
