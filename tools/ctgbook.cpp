// talvin-ctgbook: builds a CTG opening book from PGN files or move lines.
#include <strings.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "board/board.h"
#include "bookGames.h"
#include "ctgWriter.h"

namespace {

void usage() {
    fprintf(stderr,
            "usage: talvin-ctgbook [-p PLIES] [-m GAMES] BOOK.ctg FILE...\n"
            "  Builds BOOK.ctg, .cto and .ctb from the games of the FILEs: PGN when the\n"
            "  name ends in .pgn, else one game a line (moves in coordinate notation or\n"
            "  SAN, then the result 1-0, 0-1, 1/2-1/2 or *; \"$N\" after a move gives it\n"
            "  the annotation byte N, and 64 to 127 keep the engine from playing it).\n"
            "  -p PLIES  moves per game that go into the book (default 40)\n"
            "  -m GAMES  leave out positions reached by fewer games (default 1)\n");
    exit(2);
}

}  // namespace

int main(int argc, char** argv) {
    ctgWriter writer;
    int option;
    while ((option = getopt(argc, argv, "p:m:")) != -1) {
        if (option == 'p') writer.maxPlies = atoi(optarg);
        else if (option == 'm') writer.minGames = atoi(optarg);
        else usage();
    }
    if (argc - optind < 2 || writer.maxPlies < 0) usage();
    const char* bookPath = argv[optind];

    const board prototype;
    int games = 0, failures = 0;
    for (int i = optind + 1; i < argc; i++) {
        std::ifstream file(argv[i], std::ios::binary);
        if (!file) {
            fprintf(stderr, "talvin-ctgbook: cannot read %s\n", argv[i]);
            return 1;
        }
        std::stringstream text;
        text << file.rdbuf();
        const size_t length = std::strlen(argv[i]);
        const bool pgn = length >= 4 && strcasecmp(argv[i] + length - 4, ".pgn") == 0;
        std::vector<std::string> warnings;
        readBookGames(
            text.str(), pgn, prototype,
            [&](const bookGame& game) {
                std::string error;
                games++;
                if (!writer.addGame(game, error)) {
                    fprintf(stderr, "%s: game %d: %s; the game ends there\n", argv[i], games, error.c_str());
                    failures++;
                }
            },
            warnings);
        for (const std::string& warning : warnings) fprintf(stderr, "%s: %s\n", argv[i], warning.c_str());
    }
    std::string error;
    if (!writer.write(bookPath, error)) {
        fprintf(stderr, "talvin-ctgbook: %s\n", error.c_str());
        return 1;
    }
    printf("%s: %d games, %d positions in %d data pages\n", bookPath, games, writer.storedPositions, writer.dataPages);
    return 0;
}
