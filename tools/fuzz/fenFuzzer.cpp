// libFuzzer target: arbitrary text goes through the FEN reader, and the
// resulting position, however broken, through the FEN writer, the move
// generators, makeMove, the legality test, the game-end test and the static
// evaluation. Besides the sanitizers it checks three properties:
//  - reading back what getFen wrote gives the same position and key;
//  - in an ordinary position (one king each, the side that just moved not in
//    check, castling rights and en-passant square backed by the right pieces),
//    every legal move leaves the board equal to the same position read fresh
//    from its FEN, i.e. makeMove's incremental updates match a full rebuild;
//  - the evaluation of any board, also one a pseudo-legal move corrupted,
//    gives the same full score twice in a row, and inside a narrow window
//    either that score or one of the window's bounds.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "board/board.h"

namespace {

constexpr size_t maxInputLength = 4096;
// printBoard writes getFen into a 100-byte buffer.
constexpr size_t maxFenLength = 99;

board& fuzzBoard() {
    static board instance;
    return instance;
}

// A board as left by setupStartPosition. Each input starts from it, because
// setupPosition keeps the old king squares when the FEN lacks a king and a
// finding must not depend on the inputs run before it.
const board& pristineBoard() {
    static const board start = fuzzBoard();
    return start;
}

[[noreturn]] void fail(const char* what, const char* fen) {
    std::fprintf(stderr, "\nfen-fuzzer: %s\n  fen: %s\n", what, fen);
    std::abort();
}

void writeFen(const board& b, char* out) {
    // Sentinel beyond the promised length, so an overlong FEN is caught even
    // when it still fits in our buffer.
    std::memset(out, 0x7F, 128);
    b.getFen(out);
    const void* end = std::memchr(out, 0, 128);
    if (!end || static_cast<const char*>(end) - out > static_cast<long>(maxFenLength)) {
        out[127] = 0;
        fail("getFen wrote more than 99 characters", out);
    }
}

// Fields that a FEN fully determines. The pawn counts, clock, ply and the
// search bookkeeping are left out: the FEN writer does not round-trip the
// numbers, and the pawn counts are not maintained.
const char* firstDifference(const board& a, const board& b) {
    if (std::memcmp(a.pieceOn, b.pieceOn, sizeof a.pieceOn)) return "pieceOn";
    if (std::memcmp(a.bb, b.bb, sizeof a.bb)) return "bitboards";
    if (a.occupied != b.occupied) return "occupied";
    if (a.toMove != b.toMove) return "toMove";
    if (a.castle != b.castle) return "castle";
    if (a.enPassant != b.enPassant) return "enPassant";
    if (a.wMat != b.wMat || a.bMat != b.bMat) return "material";
    if (a.totalMat != b.totalMat) return "totalMat";
    if (a.lazy != b.lazy) return "lazy";
    for (int type = KNIGHT; type <= QUEEN; type++)
        if (a.pieceCount[0][type] != b.pieceCount[0][type] || a.pieceCount[1][type] != b.pieceCount[1][type])
            return "pieceCount";
    if (a.wKingSq != b.wKingSq || a.bKingSq != b.bKingSq) return "king square";
    if (a.boardKey != b.boardKey) return "boardKey";
    return nullptr;
}

// setupPosition overwrites everything compared above except the king square
// of a missing king, which it keeps; starting from a copy keeps it too.
void expectSameAsReparsed(const board& b, const char* what) {
    char fen[128];
    writeFen(b, fen);
    board reparsed = b;
    reparsed.setupPosition(fen);
    if (const char* field = firstDifference(b, reparsed)) {
        char message[160];
        std::snprintf(message, sizeof message, "%s: %s differs from the position read back", what, field);
        fail(message, fen);
    }
}

bool onlyOne(uint64_t set, int square) { return set == 1ULL << square; }

bool holds(const board& b, int type, int side, int square) {
    return b.pieceOn[square] == type && (b.bb[NOPIECE][side] >> square & 1);
}

// Positions in which a pseudo-legal move can only be a real chess move, so
// makeMove is expected to keep the board consistent. Elsewhere it is allowed
// to corrupt the board (castling without the rook, en passant without the
// pawn, capturing a king).
bool isOrdinaryPosition(const board& b) {
    if (!onlyOne(b.bb[KING][WHITE], b.wKingSq) || !onlyOne(b.bb[KING][BLACK], b.bKingSq)) return false;
    if (b.toMove == 1 ? b.attackedBy(b.bKingSq, WHITE) : b.attackedBy(b.wKingSq, BLACK)) return false;
    if ((b.castle & 3) && !holds(b, KING, WHITE, 3)) return false;
    if ((b.castle & 12) && !holds(b, KING, BLACK, 59)) return false;
    if ((b.castle & 1) && !holds(b, ROOK, WHITE, 0)) return false;
    if ((b.castle & 2) && !holds(b, ROOK, WHITE, 7)) return false;
    if ((b.castle & 4) && !holds(b, ROOK, BLACK, 56)) return false;
    if ((b.castle & 8) && !holds(b, ROOK, BLACK, 63)) return false;
    if (b.enPassant) {
        const int square = b.enPassant;
        const bool white = b.toMove == 1;
        if (square / 8 != (white ? 5 : 2)) return false;
        const int pushed = white ? square - 8 : square + 8;
        const int origin = white ? square + 8 : square - 8;
        if (b.pieceOn[square] != NOPIECE || b.pieceOn[origin] != NOPIECE) return false;
        if (!holds(b, PAWN, white ? BLACK : WHITE, pushed)) return false;
    }
    return true;
}

// Bounds no score reaches, not even with 62 queens.
constexpr int noBound = 1000000;

void checkEvaluation(board b, const char* what) {
    const int full = b.evaluate(-noBound, noBound);
    bool consistent = b.evaluate(-noBound, noBound) == full;
    for (int alpha : {full - 300, full - 25, full + 200}) {
        const int value = b.evaluate(alpha, alpha + 50);
        consistent = consistent && (value == full || value == alpha || value == alpha + 50);
    }
    if (!consistent) {
        char fen[128];
        writeFen(b, fen);
        char message[96];
        std::snprintf(message, sizeof message, "%s: the evaluation is not consistent", what);
        fail(message, fen);
    }
}

void exercisePseudoLegalMoves(const board& b) {
    uint16_t captures[moveBufferSize];
    uint16_t quiets[moveBufferSize];
    b.generateCaptureMoves(captures);
    b.generateNonCaptureMoves(quiets);
    for (const uint16_t* list : {captures, quiets}) {
        for (int i = 0; i < maxMovesPerList && list[i]; i++) {
            board next = b;
            next.makeMove(list[i]);
            (void)next.isMoveIllegal(list[i]);
            checkEvaluation(next, "after a pseudo-legal move");
        }
    }
}

void exerciseLegalMoves(const board& b) {
    const bool ordinary = isOrdinaryPosition(b);
    uint16_t legal[moveBufferSize];
    b.generateLegalMoves(legal);
    for (int i = 0; i < moveBufferSize && legal[i]; i++) {
        board next = b;
        next.makeMove(legal[i]);
        checkEvaluation(next, "after a legal move");
        (void)next.printGameEndedMessage();
        (void)next.inCheck();
        char after[128];
        writeFen(next, after);
        if (ordinary) {
            char what[48];
            char text[9];
            moveToText(legal[i], text);
            std::snprintf(what, sizeof what, "after legal move %s", text);
            expectSameAsReparsed(next, what);
        }
    }
}

// Move text is tried at the start of the input and of each of its first
// blank-separated words, so the fuzzer can append candidate moves to a FEN.
void exerciseMoveText(const board& b, const char* text, size_t length) {
    int tried = 0;
    for (size_t i = 0; i < length && tried < 8; i++) {
        if (i > 0 && text[i - 1] != ' ') continue;
        tried++;
        const int move = b.convertMovestringToInt(text + i);
        if (move) {
            board next = b;
            next.makeMove(move);
            if (isOrdinaryPosition(b)) expectSameAsReparsed(next, "after a move read from text");
        }
    }
    (void)b.convertMovestringToInt(text + (length > 5 ? length - 5 : 0));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The board prints on some paths (a captured king, game-end messages).
    if (!std::freopen("/dev/null", "w", stdout)) std::abort();
    (void)pristineBoard();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static char text[maxInputLength + 1];
    const size_t length = size < maxInputLength ? size : maxInputLength;
    std::memcpy(text, data, length);
    text[length] = 0;
    const size_t textLength = std::strlen(text);

    board& b = fuzzBoard();
    b = pristineBoard();
    b.setupPosition(text);

    char fen[128];
    writeFen(b, fen);
    expectSameAsReparsed(b, "after setupPosition");
    checkEvaluation(b, "after setupPosition");

    exercisePseudoLegalMoves(b);
    exerciseLegalMoves(b);

    board afterNull = b;
    afterNull.makeMove(nullMove);
    expectSameAsReparsed(afterNull, "after the null move");

    (void)b.inCheck();
    const int someSquare = textLength ? static_cast<uint8_t>(text[0]) % 64 : 0;
    for (int square : {0, 7, 27, 56, 63, int(b.wKingSq), int(b.bKingSq), someSquare}) {
        (void)b.underAttack(square, 1);
        (void)b.underAttack(square, -1);
    }
    (void)b.printGameEndedMessage();
    exerciseMoveText(b, text, textLength);
    return 0;
}
