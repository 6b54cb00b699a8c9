#include <algorithm>
#include <cstdio>

#include "board/board.h"

namespace {
constexpr uint8_t noRecapture = 0xFF;
}

void board::makeMove(int move) {
    move &= 0xFFFF;
    if (move == nullMove) {
        zKeyset.changeSides(boardKey);
        zKeyset.addRemoveEnpassantField(boardKey, enPassant);
        nullMoves++;
        enPassant = 0;
        toMove = static_cast<int8_t>(-toMove);
        return;
    }

    const int from = moveFrom(move), to = moveTo(move);
    // A stray move word must not index past the piece tables.
    const int promo = std::min(movePromotion(move), int(QUEEN));
    const int moving = pieceOn[from];
    const int captured = pieceOn[to];
    const int side = toMove;
    const int us = side == 1 ? WHITE : BLACK, them = us ^ 1;
    const int ourIndex = zorbicKeyset::colourIndex(side);
    int32_t& ourMat = us == WHITE ? wMat : bMat;
    int32_t& theirMat = us == WHITE ? bMat : wMat;

    nullMoves = 0;
    pieceOn[to] = static_cast<int8_t>(moving);
    pieceOn[from] = NOPIECE;

    switch (moving) {
    case PAWN: {
        deleteBit(bb[PAWN][us], from);
        if (promo) {
            pieceOn[to] = static_cast<int8_t>(promo);
            addBit(bb[promo][us], to);
            const int gain = pieceValue[promo] - pieceValue[PAWN];
            ourMat += gain;
            totalMat += gain;
            lazy += side * gain;
            pieceCount[ourIndex][promo]++;
        } else {
            addBit(bb[PAWN][us], to);
        }
        // Black's test alone guards against square 0; a white pawn never gets there.
        // (A board set up without a king can still move a pawn from the king's
        // stale square anywhere, so the victim is kept on the board.)
        const int victim = us == WHITE ? to - 8 : to + 8;
        const bool enPassantCapture = (us == WHITE ? to == enPassant : (enPassant != 0 && to == enPassant)) &&
                                      victim >= 0 && victim < 64;
        if (enPassantCapture) {
            deleteBit(bb[PAWN][them], victim);
            deleteBit(bb[NOPIECE][them], victim);
            deleteBit(occupied, victim);
            pieceOn[victim] = NOPIECE;
            zKeyset.addRemovePiece(boardKey, PAWN, -side, victim);
            theirMat -= pieceValue[PAWN];
            totalMat -= pieceValue[PAWN];
            lazy += side * pieceValue[PAWN];
        }
        break;
    }
    case KNIGHT:
    case BISHOP:
    case QUEEN:
        deleteBit(bb[moving][us], from);
        addBit(bb[moving][us], to);
        break;
    case ROOK: {
        deleteBit(bb[ROOK][us], from);
        addBit(bb[ROOK][us], to);
        int right = 0;
        if (us == WHITE) right = from == 0 ? 1 : from == 7 ? 2 : 0;
        else right = from == 56 ? 4 : from == 63 ? 8 : 0;
        if (right & castle) {
            zKeyset.updateCastle(boardKey, right);
            castle &= ~right;
        }
        break;
    }
    case KING: {
        (us == WHITE ? wKingSq : bKingSq) = static_cast<uint8_t>(to);
        deleteBit(bb[KING][us], from);
        addBit(bb[KING][us], to);
        const int ourRights = castle & (us == WHITE ? 3 : 12);
        if (ourRights) {
            zKeyset.updateCastle(boardKey, ourRights);
            castle &= ~ourRights;
        }
        if (!(kingAttacks[from] >> to & 1)) {
            int rookFrom, rookTo;
            if (us == WHITE) {
                rookFrom = to == 1 ? 0 : 7;
                rookTo = to == 1 ? 2 : 4;
            } else {
                rookFrom = to == 57 ? 56 : 63;
                rookTo = to == 57 ? 58 : 60;
            }
            for (uint64_t* set : {&bb[ROOK][us], &bb[NOPIECE][us], &occupied}) {
                deleteBit(*set, rookFrom);
                addBit(*set, rookTo);
            }
            pieceOn[rookFrom] = NOPIECE;
            pieceOn[rookTo] = ROOK;
            zKeyset.addRemovePiece(boardKey, ROOK, side, rookFrom);
            zKeyset.addRemovePiece(boardKey, ROOK, side, rookTo);
        }
        break;
    }
    default:
        break;
    }

    if (captured != NOPIECE) {
        deleteBit(bb[captured][them], to);
        deleteBit(bb[NOPIECE][them], to);
        if (captured == ROOK) {
            int right = 0;
            if (us == WHITE) right = to == 56 ? 4 : to == 63 ? 8 : 0;
            else right = to == 0 ? 1 : to == 7 ? 2 : 0;
            if (right & castle) {
                zKeyset.updateCastle(boardKey, right);
                castle &= ~right;
            }
        }
        if (captured < KING) pieceCount[zorbicKeyset::colourIndex(-side)][captured]--;
        zKeyset.addRemovePiece(boardKey, captured, -side, to);
        theirMat -= pieceValue[captured];
        totalMat -= pieceValue[captured];
        lazy += side * pieceValue[captured];
        if (captured == KING) {
            char text[9];
            moveToText(move, text);
            printf(us == WHITE ? "\n king has been captured! Move=" : "\n king has been captured!\n");
            printf("%s", text);
            printBoard();
        }
    }

    deleteBit(bb[NOPIECE][us], from);
    addBit(bb[NOPIECE][us], to);
    deleteBit(occupied, from);
    addBit(occupied, to);

    recaptureSq = pieceValue[captured] == pieceValue[moving] ? static_cast<uint8_t>(to) : noRecapture;

    zKeyset.addRemovePiece(boardKey, moving, side, from);
    zKeyset.addRemovePiece(boardKey, pieceOn[to], side, to);
    toMove = static_cast<int8_t>(-toMove);
    zKeyset.changeSides(boardKey);
    if (enPassant) {
        zKeyset.addRemoveEnpassantField(boardKey, enPassant);
        enPassant = 0;
    }
    if (move & 0x8000) {
        enPassant = static_cast<int8_t>((from + to) / 2);
        zKeyset.addRemoveEnpassantField(boardKey, enPassant);
    }

    fiftyMoves = (captured == NOPIECE && moving != PAWN) ? static_cast<int8_t>(fiftyMoves + 1) : 0;
    ply++;
    keyHistory[ply % 150] = boardKey;
}
