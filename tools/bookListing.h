#pragma once
#include <string>

class bookSource;

// talvin-book's text for a position given as FEN: "FEN -> move:weight ...",
// the moves in book order, each weight the one the engine's book choice
// gives the move (for Polyglot books the stored weight), " (never)" after a
// move the engine never plays; "FEN -> not in book" when the book does not
// hold it. verbose adds a line per move with its annotation and, for CTG
// books, the game counts. False when the text is not a position.
bool listBookPosition(bookSource& source, const std::string& fen, bool verbose, std::string& out);
