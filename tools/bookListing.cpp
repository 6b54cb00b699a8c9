#include "bookListing.h"

#include "board/board.h"
#include "book/book.h"
#include "book/bookBoard.h"
#include "book/polyglotBook.h"

namespace {

bool neverPlayed(int annotation) { return annotation >= 64 && annotation <= 127; }

// The PGN symbols and the few NAGs a book uses.
const char* annotationName(int annotation) {
    switch (annotation) {
    case 1: return " (!)";
    case 2: return " (?)";
    case 3: return " (!!)";
    case 4: return " (?\?)";
    case 5: return " (!?)";
    case 6: return " (?!)";
    case 8: return " (only move)";
    case 22: return " (zugzwang)";
    default: return neverPlayed(annotation) ? " (never played)" : "";
    }
}

// "N games: W won by the side that moved into it, D drawn, L lost", or "".
std::string counts(bookSource& source, const char* fen) {
    int wins, draws, losses;
    if (!source.results(fen, wins, draws, losses)) return "";
    const int games = wins + draws + losses;
    return std::to_string(games) + (games == 1 ? " game: " : " games: ") + std::to_string(wins) +
           " won by the side that moved into it, " + std::to_string(draws) + " drawn, " + std::to_string(losses) +
           " lost";
}

}  // namespace

bool listBookPosition(bookSource& source, const std::string& fen, bool verbose, std::string& out) {
    out = fen + " -> ";
    bookBoard rules;
    if (!rules.setup(fen.c_str())) {
        out += "not a position\n";
        return false;
    }
    if (!source.contains(fen.c_str())) {
        out += "not in book\n";
        return true;
    }
    bookSource::entry entries[maxBookMoves];
    int count = 0;
    if (!source.moves(fen.c_str(), entries, maxBookMoves, count)) {
        out += "unreadable\n";
        return true;
    }
    // Polyglot books hold no game counts, and results() answers only for the
    // positions the moves just listed lead to.
    const bool polyglot = dynamic_cast<polyglotBook*>(&source) != nullptr;
    std::string details;
    if (verbose && !polyglot) details = "  position: " + counts(source, fen.c_str()) + "\n";
    board position;
    position.setupPosition(fen.c_str());
    for (int i = 0; i < count; i++) {
        const bookSource::entry& move = entries[i];
        const bool never = neverPlayed(move.annotation);
        // Polyglot marks exactly its moves of stored weight 0 as never played.
        const int weight = polyglot && never ? 0 : book::resultWeight(source, position, move.move);
        if (i) out += ' ';
        out.append(move.move).append(":").append(std::to_string(weight)).append(never ? " (never)" : "");
        if (!verbose) continue;
        details += "  " + std::string(move.move) + ": weight " + std::to_string(weight);
        if (move.annotation)
            details += ", annotation " + std::to_string(move.annotation) + annotationName(move.annotation);
        board next = position;
        next.makeMove(next.convertMovestringToInt(move.move));
        char nextFen[128];
        next.getFen(nextFen);
        const std::string after = polyglot ? "" : counts(source, nextFen);
        if (!polyglot) details += after.empty() ? "; the position after it is not in the book" : "; after it " + after;
        details += "\n";
    }
    out += "\n" + details;
    return true;
}
