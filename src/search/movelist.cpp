#include "search/movelist.h"

void movelist::sortAfterSearch(int n) {
    int best = -mateScore - 1;  // below every real score, above the marks
    for (int i = 0; i < 100 && moves[i] != 0; i++) {
        const int s = score(i);
        if (i < n && s > best) {
            best = s;
            setScore(i, 100 + i);
        } else if (s != notSearchedMark && s != abandonedMark) {
            setScore(i, 100 - i);
        }
    }
    sortMoves(moves, n);
    setScore(0, best);
}

int movelist::sortAfterBetaCutoff(int n) {
    sortAfterSearch(n);
    const int best = score(0);
    if (best == notSearchedMark) return 0;
    int count = 0;
    while (count < 100 && moves[count] != 0) {
        setScore(count, best);
        count++;
        if (count < 100 && score(count) == notSearchedMark) break;
    }
    return count;
}
