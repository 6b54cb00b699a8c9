#pragma once
#include <cstdint>
#include <cstdio>
#include <string>

#include "book/bookSource.h"
#include "book/ctgPosition.h"

// A CTG book: the .ctg with the positions, the .cto index by position hash,
// and the .ctb, which is only checked to be there. The files are opened at
// the first probe and stay open; a book that cannot be opened is tried
// again at the next probe.
class ctgBook : public bookSource {
public:
    // Path of the .ctg; the other two files lie next to it.
    explicit ctgBook(const char* path);
    ~ctgBook() override;
    ctgBook(const ctgBook&) = delete;
    ctgBook& operator=(const ctgBook&) = delete;

    bool open() override;
    bool contains(const char* fen) override;
    bool moves(const char* fen, entry* out, int capacity, int& count) override;
    bool results(const char* fen, int& wins, int& draws, int& losses) override;

private:
    static constexpr int cachedPages = 4;
    struct cachedPage {
        int64_t number = -1;
        uint8_t bytes[ctg::pageSize];
    };

    std::string ctgPath, ctoPath, ctbPath;
    std::FILE* ctgFile = nullptr;
    std::FILE* ctoFile = nullptr;
    int64_t dataPages = 0;
    int64_t tableEntries = 0;
    cachedPage cache[cachedPages];
    int nextVictim = 0;

    void close();
    const uint8_t* page(int64_t number);
    const uint8_t* searchPage(uint32_t number, const ctgPosition& position);
    // The position's entry, valid until the next page is read; null when absent.
    const uint8_t* find(const ctgPosition& position);
};
