// talvin-bookbench: book lookups per second and the time the book step adds
// to a move, for a Polyglot book and for a CTG book that talvin-ctgbook's
// writer makes from the same opening lines.
#include <stdlib.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "board/board.h"
#include "book/book.h"
#include "book/ctgBook.h"
#include "book/polyglotBook.h"
#include "bookGames.h"
#include "ctgWriter.h"

namespace {

using clock_type = std::chrono::steady_clock;

constexpr int walks = 2000;
constexpr int maxWalkPlies = 30;

int bookSquare(int engineSquare) { return 8 * (engineSquare / 8) + 7 - engineSquare % 8; }

// Weighted random walks through the Polyglot book, as games with made-up
// results, and every position they pass.
void walkBook(polyglotBook& source, const board& start, std::vector<bookGame>& games, std::vector<std::string>& fens) {
    std::mt19937 random(1);
    for (int walk = 0; walk < walks; walk++) {
        board position = start;
        bookGame game{{}, "", static_cast<gameResult>(random() % 3)};
        for (int ply = 0; ply < maxWalkPlies; ply++) {
            char fen[128];
            position.getFen(fen);
            bookSource::entry entries[maxBookMoves];
            int count = 0;
            if (!source.moves(fen, entries, maxBookMoves, count) || count == 0) break;
            int weights[maxBookMoves], total = 0;
            for (int i = 0; i < count; i++) {
                int wins = 0, draws, losses;
                board next = position;
                next.makeMove(next.convertMovestringToInt(entries[i].move));
                char nextFen[128];
                next.getFen(nextFen);
                source.results(nextFen, wins, draws, losses);
                total += weights[i] = wins + 1;
            }
            int pick = static_cast<int>(random() % static_cast<unsigned>(total)), chosen = 0;
            while (pick >= weights[chosen]) pick -= weights[chosen++];
            const int move = position.convertMovestringToInt(entries[chosen].move);
            if (walk < walks / 4) fens.push_back(fen);
            game.plies.push_back(
                {fen, bookSquare(moveFrom(move)), bookSquare(moveTo(move)), "\0nbrq"[movePromotion(move)], 0});
            position.makeMove(move);
        }
        char fen[128];
        position.getFen(fen);
        game.finalFen = fen;
        if (!game.plies.empty()) games.push_back(game);
    }
}

template <typename Work>
double secondsPerCall(int calls, Work&& work) {
    const auto start = clock_type::now();
    for (int i = 0; i < calls; i++) work(i);
    return std::chrono::duration<double>(clock_type::now() - start).count() / calls;
}

void measure(const char* name, std::unique_ptr<bookSource> source, const std::vector<std::string>& fens,
             const std::vector<board>& positions, const std::vector<board>& outOfBook) {
    book openingBook;
    openingBook.source = std::move(source);
    bookSource& reader = *openingBook.source;
    const int n = static_cast<int>(fens.size());
    int found = 0;
    for (const std::string& fen : fens) found += reader.contains(fen.c_str());
    const double lookup = secondsPerCall(20 * n, [&](int i) { reader.contains(fens[i % n].c_str()); });
    char move[16];
    const double stepInBook =
        secondsPerCall(5 * n, [&](int i) { openingBook.chooseMove(positions[i % n], move, static_cast<uint32_t>(i)); });
    const int m = static_cast<int>(outOfBook.size());
    const double stepOutOfBook = secondsPerCall(
        20 * m, [&](int i) { openingBook.chooseMove(outOfBook[i % m], move, static_cast<uint32_t>(i)); });
    printf("%-9s %d of %d positions found; %.0f lookups/s; book step %.1f us in the book, %.1f us out of it\n", name,
           found, n, 1 / lookup, stepInBook * 1e6, stepOutOfBook * 1e6);
}

}  // namespace

int main(int argc, char** argv) {
    const char* polyglotPath = argc > 1 ? argv[1] : "/usr/share/games/gnuchess/book.bin";
    polyglotBook polyglot(polyglotPath);
    const board start;
    std::vector<bookGame> games;
    std::vector<std::string> fens;
    if (!polyglot.contains("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1")) {
        fprintf(stderr, "usage: talvin-bookbench [POLYGLOT.bin]  (the book must hold the start position)\n");
        return 2;
    }
    walkBook(polyglot, start, games, fens);

    char directory[] = "/tmp/talvin-bookbench-XXXXXX";
    if (mkdtemp(directory) == nullptr) return 1;
    const std::string ctgPath = std::string(directory) + "/bench.ctg";
    ctgWriter writer;
    std::string error;
    int cut = 0;  // at a move the format cannot hold: the positions after it stay out
    for (const bookGame& game : games) cut += !writer.addGame(game, error);
    if (!writer.write(ctgPath, error)) {
        fprintf(stderr, "talvin-bookbench: %s\n", error.c_str());
        return 1;
    }
    printf("%zu positions on %d book walks; the CTG book of the walks: %d positions in %d pages, %d walks cut short\n",
           fens.size(), walks, writer.storedPositions, writer.dataPages, cut);

    std::vector<board> positions, outOfBook;
    for (const std::string& fen : fens) {
        positions.push_back(start);
        positions.back().setupPosition(fen.c_str());
    }
    for (const char* fen : {"r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
                            "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", "4k3/8/8/8/8/8/8/4K2R w K - 0 1"}) {
        outOfBook.push_back(start);
        outOfBook.back().setupPosition(fen);
    }
    measure("polyglot", std::make_unique<polyglotBook>(polyglotPath), fens, positions, outOfBook);
    measure("ctg", std::make_unique<ctgBook>(ctgPath.c_str()), fens, positions, outOfBook);
    std::system(("rm -rf '" + std::string(directory) + "'").c_str());
    return 0;
}
