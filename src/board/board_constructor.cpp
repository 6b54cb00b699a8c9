#include <cstdlib>

#include "board/board.h"
#include "board/killerMoveTable.h"
#include "settings/settingsFile.h"

int32_t lastBit[65536];
int32_t bitCount[65536];
uint64_t bitMask[64];
uint64_t kingAttacks[64];
uint64_t knightAttacks[64];
uint64_t whitePawnAttacks[64];
uint64_t blackPawnAttacks[64];
uint64_t diagonalA[64];
uint64_t diagonalB[64];
uint64_t sameColourSquares[64];
int32_t distance[64][64];
uint64_t byteSpread[256];
int32_t unstoppablePawn[64][64][4];

int pieceValue[7] = {100, 300, 300, 500, 900, 0, 0};
int maxMaterial = 7800;
uint64_t keyHistory[150];

slidingMovesGenerator board::smg;
zorbicKeyset board::zKeyset;

static killerMoveTable localKillers;
killerMoveTable* board::killers = &localKillers;

// Squares reached from square by the given (file, rank) steps, clipped at the edges.
static uint64_t stepTargets(int square, const int (*steps)[2], int count) {
    uint64_t targets = 0;
    int file = 7 - square % 8, rank = square / 8;
    for (int i = 0; i < count; i++) {
        int f = file + steps[i][0], r = rank + steps[i][1];
        if (f >= 0 && f < 8 && r >= 0 && r < 8) targets |= 1ULL << (8 * r + 7 - f);
    }
    return targets;
}

// The whole line through square along the given step, the square included.
static uint64_t diagonalLine(int square, int fileStep, int rankStep) {
    uint64_t line = 1ULL << square;
    for (int direction = -1; direction <= 1; direction += 2) {
        int f = 7 - square % 8 + direction * fileStep, r = square / 8 + direction * rankStep;
        for (; f >= 0 && f < 8 && r >= 0 && r < 8; f += direction * fileStep, r += direction * rankStep)
            line |= 1ULL << (8 * r + 7 - f);
    }
    return line;
}

static void buildTables() {
    static const int kingSteps[8][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
    static const int knightSteps[8][2] = {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};
    static const int whitePawnSteps[2][2] = {{-1, 1}, {1, 1}};
    static const int blackPawnSteps[2][2] = {{-1, -1}, {1, -1}};

    lastBit[0] = 0;
    bitCount[0] = 0;
    for (int x = 1; x < 65536; x++) {
        lastBit[x] = lastBit[x >> 1] + (x > 1 ? 1 : 0);
        bitCount[x] = bitCount[x >> 1] + (x & 1);
    }
    for (int square = 0; square < 64; square++) {
        bitMask[square] = 1ULL << square;
        kingAttacks[square] = stepTargets(square, kingSteps, 8);
        knightAttacks[square] = stepTargets(square, knightSteps, 8);
        whitePawnAttacks[square] = stepTargets(square, whitePawnSteps, 2);
        blackPawnAttacks[square] = stepTargets(square, blackPawnSteps, 2);
        // +9 is one file towards a and one rank up, +7 one file towards h and one rank up
        diagonalA[square] = diagonalLine(square, -1, 1);
        diagonalB[square] = diagonalLine(square, 1, 1);
        sameColourSquares[square] = ((square / 8 + square) % 2 == 0) ? 0xAA55AA55AA55AA55ULL : ~0xAA55AA55AA55AA55ULL;
    }

#pragma omp parallel for schedule(static)
    for (int a = 0; a < 64; a++)
        for (int b = 0; b < 64; b++) {
            int fileDiff = std::abs(a % 8 - b % 8), rankDiff = std::abs(a / 8 - b / 8);
            distance[a][b] = fileDiff > rankDiff ? fileDiff : rankDiff;
        }

#pragma omp parallel for schedule(static)
    for (int b = 0; b < 256; b++) byteSpread[b] = static_cast<uint64_t>(b) * 0x0101010101010101ULL;

#pragma omp parallel for schedule(static)
    for (int p = 0; p < 64; p++) {
        int r = p / 8, c = p % 8;
        int mW = r == 1 ? 6 - r : 7 - r;
        int mB = r == 6 ? r - 1 : r;
        for (int k = 0; k < 64; k++) {
            int dUp = distance[k][56 + c] - 1;
            int dDown = distance[k][c] - 1;
            unstoppablePawn[p][k][0] = dDown > mB - 1;
            unstoppablePawn[p][k][1] = mW < dUp;
            unstoppablePawn[p][k][2] = mB < dDown;
            unstoppablePawn[p][k][3] = dUp > mW - 1;
        }
    }
}

board::board(killerMoveTable* killerTable) {
    pieceValueSettings values;
    readPieceValueSettings(settingsFileName, values);
    pieceValue[PAWN] = values.pawn;
    pieceValue[KNIGHT] = values.knight;
    pieceValue[BISHOP] = values.bishop;
    pieceValue[ROOK] = values.rook;
    pieceValue[QUEEN] = values.queen;
    pieceValue[KING] = 0;
    pieceValue[NOPIECE] = 0;
    maxMaterial = 16 * values.pawn + 4 * (values.knight + values.bishop + values.rook) + 2 * values.queen;
    if (killerTable) killers = killerTable;
    buildTables();
    wKingSq = bKingSq = 0;
    boardKey = 0;  // the set-up evaluates before it computes the key
    setupStartPosition();
}
