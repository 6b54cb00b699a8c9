// talvin-book: lists the moves a book holds for positions, with the weights
// the engine's book choice gives them.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include "book/book.h"
#include "bookListing.h"

namespace {

void usage() {
    fprintf(stderr,
            "usage: talvin-book [-v] BOOK [FEN...]\n"
            "  Prints \"FEN -> move:weight ...\" for each FEN (the arguments, else one a line\n"
            "  on standard input): the moves of a CTG book (BOOK.ctg with its .cto and .ctb)\n"
            "  or a Polyglot book (BOOK.bin) in the book's order, \" (never)\" after a move\n"
            "  the engine never plays, or \"FEN -> not in book\".\n"
            "  -v  a line per move with its annotation and game counts\n");
    exit(2);
}

}  // namespace

int main(int argc, char** argv) {
    bool verbose = false;
    int option;
    while ((option = getopt(argc, argv, "v")) != -1) {
        if (option == 'v') verbose = true;
        else usage();
    }
    if (optind >= argc) usage();
    const auto source = book::sourceFor(argv[optind]);
    if (!source->open()) return 1;
    int status = 0;
    auto list = [&](const std::string& fen) {
        std::string text;
        if (!listBookPosition(*source, fen, verbose, text)) status = 1;
        fputs(text.c_str(), stdout);
    };
    if (optind + 1 < argc) {
        for (int i = optind + 1; i < argc; i++) list(argv[i]);
    } else {
        for (std::string line; std::getline(std::cin, line);) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            if (line.find_first_not_of(" \t") != std::string::npos) list(line);
        }
    }
    return status;
}
