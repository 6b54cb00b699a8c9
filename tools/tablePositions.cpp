#include "tablePositions.h"

#include <algorithm>
#include <cctype>

#include "egtb/tablePosition.h"

std::vector<board> sampleTablePositions(const board& prototype, const std::string& white, const std::string& black,
                                        int count, uint32_t seed) {
    std::vector<board> positions;
    const auto next = [&seed] { return (seed = seed * 1103515245u + 12345u) >> 8; };
    std::string pieces = "K" + white + "k" + black;
    for (size_t i = 1 + white.size() + 1; i < pieces.size(); i++)
        pieces[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(pieces[i])));
    while (static_cast<int>(positions.size()) < count) {
        char squares[64] = {};
        bool placed = true;
        for (char piece : pieces) {
            const int square = static_cast<int>(next() % 64);
            placed &= squares[square] == 0 && !((piece == 'P' || piece == 'p') && (square < 8 || square >= 56));
            squares[square] = piece;
        }
        if (!placed) continue;
        std::string fen;
        for (int rank = 7; rank >= 0; rank--) {
            int empty = 0;
            for (int file = 0; file < 8; file++) {
                const char piece = squares[8 * rank + file];
                if (piece == 0) {
                    empty++;
                    continue;
                }
                if (empty) fen += static_cast<char>('0' + empty);
                fen += piece;
                empty = 0;
            }
            if (empty) fen += static_cast<char>('0' + empty);
            if (rank) fen += '/';
        }
        fen += next() % 2 ? " w - - 0 1" : " b - - 0 1";
        board b = prototype;
        b.setupPosition(fen.c_str());
        tablePosition p;
        if (toTablePosition(b, p)) positions.push_back(b);
    }
    return positions;
}
