#include "search/searchtree.h"

int searchtree::quiescence(int, board& b, int alpha, int beta) {
    nodes[1]++;
    const int standPat = b.evaluate(alpha, beta);
    if (standPat >= beta) return beta;
    int best = standPat > alpha ? standPat : alpha;

    uint16_t list[moveBufferSize];
    b.generateCaptureMoves(list);
    const int them = colourOf(-b.toMove);
    const int pawn = pieceValue[PAWN] ? pieceValue[PAWN] : 1;
    int n = 0;
    for (; list[n] != 0; n++) {
        const int move = list[n];
        const int victim = pieceValue[b.pieceOn[moveTo(move)]];
        const int attacker = pieceValue[b.pieceOn[moveFrom(move)]];
        int key;
        if (movePromotion(move) != 0) key = 24576;
        else if (!b.attackedBy(moveTo(move), them)) key = 28672 + victim / pawn;
        else if (victim > attacker) key = 28672 + (victim - attacker) / pawn;
        else if (victim == attacker) key = 20480;
        else key = -1;
        list[moveScoreSlot + n] = static_cast<uint16_t>(static_cast<int16_t>(key));
    }
    // The terminator sorts with key 0, so losing captures (key -1) end up behind it.
    list[moveScoreSlot + n] = 0;
    sortMoves(list, n + 1);

    for (int i = 0; list[i] != 0; i++) {
        board child = b;
        child.makeMove(list[i]);
        if (child.isMoveIllegal(list[i])) continue;
        const int score = -quiescence(list[i], child, -beta, -best);
        if (score >= beta) return beta;
        if (score > best) best = score;
    }
    return best;
}
