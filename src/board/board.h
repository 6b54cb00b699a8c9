#pragma once
#include <cstdint>

#include "board/bitboards.h"
#include "board/slidingMovesGenerator.h"
#include "board/zorbicKeyset.h"

class killerMoveTable;
class evalHashtable;
struct evalInfo;

enum pieceType : int { PAWN = 0, KNIGHT = 1, BISHOP = 2, ROOK = 3, QUEEN = 4, KING = 5, NOPIECE = 6 };
enum colour : int { WHITE = 0, BLACK = 1 };

// The side to move is +1 (White) or -1 (Black). Bitboards index by colour;
// piece counts, killer tables and piece keys by sideIndex (White 1).
inline int colourOf(int side) { return side == 1 ? WHITE : BLACK; }

// Bits of board::castle.
inline constexpr int whiteKingSide = 1, whiteQueenSide = 2, blackKingSide = 4, blackQueenSide = 8;
inline constexpr int whiteCastling = whiteKingSide | whiteQueenSide, blackCastling = blackKingSide | blackQueenSide;

// A mate now; the evaluation's window when no bound may cut it short.
inline constexpr int mateScore = 16000;

inline constexpr int nullMove = 0x41;
inline constexpr int moveBufferSize = 200;  // moves in 0..99 ended by 0, their scores in 100..199
inline constexpr int moveScoreSlot = 100;   // the score of move i is at moveScoreSlot + i
// Scores a search writes for moves it has no value for.
inline constexpr int notSearchedMark = -16301;
inline constexpr int abandonedMark = -16302;
inline constexpr int maxMovesPerList = 99;

inline int moveFrom(int move) { return move & 63; }
inline int moveTo(int move) { return (move >> 6) & 63; }
inline int movePromotion(int move) { return (move >> 12) & 7; }

// Program-wide values shared by every board of this process.
extern int pieceValue[7];
extern int maxMaterial;
extern uint64_t keyHistory[150];

class board {
public:
    int32_t lazy;        // wMat - bMat
    int8_t pieceOn[64];  // piece type per square, NOPIECE when empty
    int8_t toMove;       // +1 white, -1 black
    int32_t wMat;
    int32_t bMat;
    int32_t totalMat;
    int8_t pieceCount[2][5];  // [0] black, [1] white; only knight..queen are exact
    uint8_t wKingSq;
    uint8_t bKingSq;
    int8_t enPassant;  // 0 when there is none
    uint8_t castle;    // whiteKingSide | whiteQueenSide | blackKingSide | blackQueenSide
    uint8_t spare;
    int8_t fiftyMoves;
    int32_t ply;
    int32_t rootPly;
    int32_t positionalScore;
    uint8_t recaptureSq;
    uint8_t nullMoves;
    uint8_t verification;
    uint64_t boardKey;
    uint64_t bb[7][2];  // [type][WHITE/BLACK]; row NOPIECE holds all pieces of a colour
    uint64_t occupied;

    static slidingMovesGenerator smg;
    static zorbicKeyset zKeyset;
    static killerMoveTable* killers;
    // The evaluation cache the evaluation probes and fills; none when null.
    static evalHashtable* evalCache;
    // Positional part of the last full evaluation in this process (in this
    // thread, for tools that evaluate on several).
    static thread_local int lastPositionalScore;

    // Reads the piece values, builds the program-wide tables and sets up the
    // start position. A given killer table becomes the one the move
    // generator scores with.
    explicit board(killerMoveTable* killerTable = nullptr);
    // A board that is about to be overwritten by a copied image: no settings
    // read, no tables rebuilt, nothing set up.
    struct uninitialised {};
    explicit board(uninitialised) {}

    void setupStartPosition();
    void setupPosition(const char* fen);
    void getFen(char* out) const;  // at most 100 characters
    void printBoard() const;
    // Static score for the side to move; alpha or beta themselves when the
    // position is clearly outside them.
    int evaluate(int alpha, int beta);

    // Terms of the evaluation, from White's view, reading and filling the
    // evaluation's working state: evaluateRooks and evaluateQueens fill their
    // own attack slots and add to the attack units against each king.
    int evaluatePassedPawns(const evalInfo& info) const;
    int evaluateHiddenPassedPawns(const evalInfo& info) const;
    int evaluateRooks(evalInfo& info) const;
    int evaluateQueens(evalInfo& info) const;
    // Can an enemy pawn attack the piece on square with its next move? side 1 = a White piece.
    bool drivenAwayByPawn(int square, int side) const;
    // Pawn shelter of a king standing or imagined on the square.
    int calculatePStructW(int kingSquare) const;
    int calculatePStructB(int kingSquare) const;

    void generateCaptureMoves(uint16_t* buffer) const;
    void generateNonCaptureMoves(uint16_t* buffer) const;
    void generateLegalMoves(uint16_t* list) const;
    void makeMove(int move);
    bool isMoveIllegal(int move) const;
    bool printGameEndedMessage() const;
    // One king a side, the side that has just moved not in check, no pawn on
    // the first or last rank, at most 16 pieces and 8 pawns a side.
    bool isLegalPosition() const;
    // The result line when the game has ended, else null.
    const char* gameEndedMessage() const;
    int convertMovestringToInt(const char* text) const;

    // Is the square attacked by pieces of the given bitboard colour?
    bool attackedBy(int square, int attacker) const {
        const uint64_t pawnAttacks = attacker == WHITE ? blackPawnAttacks[square] : whitePawnAttacks[square];
        if (bb[PAWN][attacker] & pawnAttacks) return true;
        if (bb[KING][attacker] & kingAttacks[square]) return true;
        if (bb[KNIGHT][attacker] & knightAttacks[square]) return true;
        const uint64_t rooksQueens = bb[ROOK][attacker] | bb[QUEEN][attacker];
        if (rooksQueens && (smg.rookMoves(square, occupied) & rooksQueens)) return true;
        const uint64_t bishopsQueens = bb[BISHOP][attacker] | bb[QUEEN][attacker];
        return bishopsQueens && (smg.bishopMoves(square, occupied) & bishopsQueens);
    }
    // Attacked by the opponent of side (+1/-1)?
    bool underAttack(int square, int side) const { return attackedBy(square, colourOf(-side)); }
    bool inCheck() const { return toMove == 1 ? attackedBy(wKingSq, BLACK) : attackedBy(bKingSq, WHITE); }

private:
    void removePiece(int type, int side, int square);
    void placePiece(int type, int side, int square);
    void shiftPiece(int type, int side, int from, int to);
    void dropCastlingRights(int rights);
    void rookOffCorner(int square, int rookSide);
    void computeKey();
    int scoreCapture(int move) const;
    int scoreNonCapture(int move) const;
};

// Move text in coordinate notation with an upper-case promotion letter
// ("e7e8Q"), or "NULLMOVE"; out needs room for 9 characters.
void moveToText(int move, char* out);
// The same with the promotion letter in lower case when uci is set ("e7e8q"), as UCI front ends read it.
void moveToText(int move, char* out, bool uci);
void squareToText(int square, char* out);

// Diminishing-gap exchange sort of a move buffer, descending by the signed
// 16-bit keys at moveScoreSlot + i, moves and keys swapped together.
void sortMoves(uint16_t* buffer, int n);
