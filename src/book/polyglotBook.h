#pragma once
#include <cstdint>
#include <cstdio>
#include <string>

#include "book/bookBoard.h"
#include "book/bookSource.h"

// A Polyglot book: 16-byte entries sorted by position key, each holding the
// key, a move, its weight and a learning field that is not used. The format
// records no game counts; a move's weight is given out as the wins of the
// position it leads to, so that weights drive the book choice, and a move of
// weight 0, which Polyglot books never play, carries the annotation that
// keeps it from being chosen.
class polyglotBook : public bookSource {
public:
    explicit polyglotBook(const char* path);
    ~polyglotBook() override;
    polyglotBook(const polyglotBook&) = delete;
    polyglotBook& operator=(const polyglotBook&) = delete;

    bool open() override;
    bool contains(const char* fen) override;
    bool moves(const char* fen, entry* out, int capacity, int& count) override;
    // Known only for the positions that the moves listed last lead to.
    bool results(const char* fen, int& wins, int& draws, int& losses) override;

    static uint64_t key(const bookBoard& position);

private:
    struct rawEntry {
        uint64_t key;
        int move;
        int weight;
    };

    std::string path;
    std::FILE* file = nullptr;
    int64_t entryCount = 0;
    uint64_t childKeys[maxBookMoves];
    int childWeights[maxBookMoves];
    int childCount = 0;

    bool readEntry(int64_t index, rawEntry& out);
    // Index of the position's first entry, or -1.
    int64_t firstEntry(uint64_t positionKey);
};
