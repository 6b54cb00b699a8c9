#pragma once
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "../board/testBoard.h"
#include "../support/scratchDirectory.h"
#include "book/bookSource.h"
#include "bookGames.h"
#include "ctgWriter.h"

inline constexpr const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

inline std::string fenAfter(const char* moves, const char* fen = startFen) {
    board b = boardFrom(fen);
    std::istringstream text(moves);
    for (std::string move; text >> move;) play(b, move.c_str());
    return fenOf(b);
}

// A CTG book made by the writer from games (PGN or lists of moves).
inline void writeCtgBook(const std::string& path, const std::string& games, ctgWriter& writer, bool pgn = false) {
    std::vector<std::string> warnings;
    std::string error;
    readBookGames(
        games, pgn, boardFrom(startFen),
        [&](const bookGame& game) { EXPECT_TRUE(writer.addGame(game, error)) << error; }, warnings);
    EXPECT_TRUE(warnings.empty()) << warnings.front();
    EXPECT_TRUE(writer.write(path, error)) << error;
}

// A scratch directory per test for the book files it writes.
class BookFiles : public ::testing::Test {
protected:
    const scratchDirectory directory;

    std::string path(const std::string& name) const { return directory.file(name); }
    void writeCtg(const std::string& games, ctgWriter writer = {}, bool pgn = false) {
        writeCtgBook(path("book.ctg"), games, writer, pgn);
    }
};

// "e2e4 d2d4/70": the moves in book order, with their annotation bytes when set.
inline std::string movesOf(bookSource& source, const char* fen) {
    bookSource::entry entries[maxBookMoves];
    int count = 0;
    if (!source.moves(fen, entries, maxBookMoves, count)) return "unreadable";
    std::string text;
    for (int i = 0; i < count; i++) {
        if (i) text += ' ';
        text += entries[i].move;
        if (entries[i].annotation) {
            text += '/';
            text += std::to_string(entries[i].annotation);
        }
    }
    return text;
}

// "wins draws losses", or "none".
inline std::string resultsOf(bookSource& source, const char* fen) {
    int wins, draws, losses;
    if (!source.results(fen, wins, draws, losses)) return "none";
    return std::to_string(wins) + " " + std::to_string(draws) + " " + std::to_string(losses);
}

// Two probes of the start position each print the message (or nothing) once
// and find the position exactly when it has readable moves.
inline void expectProbes(bookSource& reader, const std::string& message, const std::string& moves, const char* label) {
    for (int probe = 0; probe < 2; probe++) {
        testing::internal::CaptureStdout();
        const bool found = reader.contains(startFen);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), message) << label;
        EXPECT_EQ(found, moves != "unreadable") << label;
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(movesOf(reader, startFen), moves) << label;
    testing::internal::GetCapturedStdout();
}
