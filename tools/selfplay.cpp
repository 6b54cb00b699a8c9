// talvin-selfplay: quiet positions from games Talvin plays against itself in
// this process, for the evaluation fit (see tools/make-fit-data.sh).
//   talvin-selfplay --games N [--seed S] [--depth D] [--book FILE] [--output FILE]
//                   [--holdout FILE] [--holdout-every K] [--random-plies R]
//   talvin-selfplay --openings N [--seed S] [--book FILE] [--output FILE]
// Each game starts with a random walk of 4..16 plies through the Polyglot
// book (Debian's gnuchess-book by default) and R random legal moves (default
// 0; the search is deterministic, so without them walks that meet play the
// same game again), then both sides search to depth D
// (default 4). A game ends by the rules, when one side's score stays beyond
// 1000 for four plies (adjudicated to that side), or drawn after 300 plies.
// Written as EPD lines with the game's result (c9): every position after the
// book that no earlier game reached, that is not in check and whose searched
// move is no capture, promotion or check, and that is not seen as a mate.
// Every K-th game (default 10) goes to the hold-out file instead, so that the
// fit is checked on games it did not see. The search's own lines go to
// standard output.
// With --openings the tool only walks the book and writes the N distinct
// positions it reaches, one FEN a line: start positions for tools/match.sh -l.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

#include "board/board.h"
#include "book/polyglotBook.h"
#include "search/localSearch.h"

namespace {

constexpr int minBookPlies = 4, maxBookPlies = 16;
constexpr int adjudicationScore = 1000, adjudicationPlies = 4;
constexpr int maxGamePlies = 300;

bool isQuietMove(const board& position, int move) {
    const int from = moveFrom(move), to = moveTo(move);
    if (position.pieceOn[to] != NOPIECE || movePromotion(move) != 0) return false;
    // An en-passant capture lands on an empty square.
    if (position.pieceOn[from] == PAWN && from % 8 != to % 8) return false;
    board after = position;
    after.makeMove(move);
    return !after.inCheck();
}

// Four FEN fields and the clocks as other programs read them; the first four
// fields alone tell positions apart.
std::string epdText(const board& position, std::string& key) {
    char fen[128];
    position.getFen(fen);
    key = fen;
    for (int fields = 0, i = 0; i < int(key.size()); i++)
        if (key[i] == ' ' && ++fields == 4) key.resize(i);
    return key + " " + std::to_string(position.fiftyMoves) + " " + std::to_string(position.ply / 2 + 1);
}

void walkBook(polyglotBook& book, board& position, std::mt19937_64& random) {
    const int plies = minBookPlies + static_cast<int>(random() % (maxBookPlies - minBookPlies + 1));
    for (int ply = 0; ply < plies; ply++) {
        char fen[128];
        position.getFen(fen);
        bookSource::entry entries[maxBookMoves];
        int count = 0, playable[maxBookMoves], playableCount = 0;
        if (!book.moves(fen, entries, maxBookMoves, count)) return;
        for (int i = 0; i < count; i++)
            if (entries[i].annotation == 0) playable[playableCount++] = i;
        if (playableCount == 0) return;
        const int chosen = playable[random() % playableCount];
        position.makeMove(position.convertMovestringToInt(entries[chosen].move));
    }
}

const char* resultText(const char* ending, int adjudicated) {
    if (adjudicated) return adjudicated > 0 ? "1-0" : "0-1";
    if (ending == nullptr || (ending[0] == '1' && ending[1] == '/')) return "1/2-1/2";
    return ending[0] == '1' ? "1-0" : "0-1";
}

int writeOpenings(polyglotBook& book, std::mt19937_64& random, int count, const char* output) {
    FILE* out = fopen(output, "w");
    if (!out) {
        fprintf(stderr, "talvin-selfplay: cannot write %s\n", output);
        return 2;
    }
    std::unordered_set<std::string> seen;
    for (int tries = 0; int(seen.size()) < count && tries < 100 * count; tries++) {
        board position;
        position.setupStartPosition();
        walkBook(book, position, random);
        std::string key;
        const std::string text = epdText(position, key);
        if (seen.insert(key).second) fprintf(out, "%s\n", text.c_str());
    }
    fclose(out);
    fprintf(stderr, "%zu openings written to %s\n", seen.size(), output);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    int games = 0, depth = 4, openings = 0, randomPlies = 0;
    unsigned long long seed = 1;
    const char* bookPath = "/usr/share/games/gnuchess/book.bin";
    const char* output = "selfplay.epd";
    const char* holdOutPath = "/dev/null";
    int holdOutEvery = 10;
    for (int i = 1; i < argc; i++) {
        const char* a = argv[i];
        const bool hasValue = i + 1 < argc;
        if (!strcmp(a, "--games") && hasValue) games = atoi(argv[++i]);
        else if (!strcmp(a, "--openings") && hasValue) openings = atoi(argv[++i]);
        else if (!strcmp(a, "--seed") && hasValue) seed = strtoull(argv[++i], nullptr, 10);
        else if (!strcmp(a, "--depth") && hasValue) depth = atoi(argv[++i]);
        else if (!strcmp(a, "--book") && hasValue) bookPath = argv[++i];
        else if (!strcmp(a, "--output") && hasValue) output = argv[++i];
        else if (!strcmp(a, "--holdout") && hasValue) holdOutPath = argv[++i];
        else if (!strcmp(a, "--holdout-every") && hasValue) holdOutEvery = atoi(argv[++i]);
        else if (!strcmp(a, "--random-plies") && hasValue) randomPlies = atoi(argv[++i]);
        else {
            fprintf(stderr,
                    "usage: talvin-selfplay --games N [--seed S] [--depth D] [--book FILE] [--output FILE] "
                    "[--holdout FILE] [--holdout-every K] [--random-plies R]\n"
                    "       talvin-selfplay --openings N [--seed S] [--book FILE] [--output FILE]\n");
            return 2;
        }
    }
    polyglotBook book(bookPath);
    std::mt19937_64 random(seed);
    std::unordered_set<std::string> seen;
    if (openings > 0) return writeOpenings(book, random, openings, output);
    FILE* out = fopen(output, "w");
    FILE* holdOut = fopen(holdOutPath, "w");
    if (games <= 0 || depth < 1 || holdOutEvery < 2 || !out || !holdOut) {
        fprintf(stderr,
                "talvin-selfplay: need --games and --depth above 0, --holdout-every above 1 and writable outputs\n");
        return 2;
    }
    localSearch search(16);
    long long written = 0;
    for (int game = 0; game < games; game++) {
        board position;
        position.setupStartPosition();
        walkBook(book, position, random);
        for (int ply = 0; ply < randomPlies; ply++) {
            uint16_t legal[moveBufferSize];
            position.generateLegalMoves(legal);
            int count = 0;
            while (legal[count]) count++;
            if (count == 0) break;
            position.makeMove(legal[random() % count]);
        }
        search.clearTables();
        std::vector<std::string> records;
        const char* ending = nullptr;
        int adjudicated = 0, decisivePlies = 0;
        for (int ply = 0; ply < maxGamePlies && !(ending = position.gameEndedMessage()); ply++) {
            const localSearch::result r = search.run(position, depth - 1, 100000000);
            if (r.move == 0) break;
            const int whiteScore = r.score * position.toMove;
            decisivePlies = std::abs(r.score) > adjudicationScore ? decisivePlies + 1 : 0;
            if (decisivePlies >= adjudicationPlies) {
                adjudicated = whiteScore > 0 ? 1 : -1;
                break;
            }
            std::string key;
            const std::string text = epdText(position, key);
            if (std::abs(r.score) < mateScore - 500 && !position.inCheck() && isQuietMove(position, r.move) &&
                seen.insert(key).second)
                records.push_back(text);
            position.makeMove(r.move);
        }
        const char* result = resultText(ending, adjudicated);
        FILE* to = (game + 1) % holdOutEvery == 0 ? holdOut : out;
        for (const std::string& text : records) fprintf(to, "%s c9 \"%s\";\n", text.c_str(), result);
        written += static_cast<long long>(records.size());
        if ((game + 1) % 50 == 0) fprintf(stderr, "%d games, %lld positions\n", game + 1, written);
    }
    fclose(out);
    fclose(holdOut);
    fprintf(stderr, "%d games, %lld positions written to %s and %s\n", games, written, output, holdOutPath);
    return 0;
}
