#include "book/polyglotBook.h"

#include <algorithm>

#include "bookFiles.h"

namespace {

uint64_t keyOf(const char* fen) {
    bookBoard position;
    EXPECT_TRUE(position.setup(fen)) << fen;
    return polyglotBook::key(position);
}

// Move words: to file, to rank, from file, from rank (3 bits each), then the promotion piece.
int moveWord(const char* text, int promotion = 0) {
    return (text[2] - 'a') | (text[3] - '1') << 3 | (text[0] - 'a') << 6 | (text[1] - '1') << 9 | promotion << 12;
}

struct rawEntry {
    uint64_t key;
    int move, weight;
};

std::string bookBytes(std::vector<rawEntry> entries) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const rawEntry& a, const rawEntry& b) { return a.key < b.key; });
    std::string bytes;
    for (const rawEntry& entry : entries) {
        for (int shift = 56; shift >= 0; shift -= 8) bytes += static_cast<char>(entry.key >> shift);
        for (int field : {entry.move, entry.weight}) bytes += {static_cast<char>(field >> 8), static_cast<char>(field)};
        bytes.append(4, '\0');  // the learn field
    }
    return bytes;
}

TEST(PolyglotBook, KeysOfTheDocumentedPositions) {
    const struct {
        const char* fen;
        uint64_t key;
    } cases[] = {
        {startFen, 0x463b96181691fc9c},
        {"rnbqkbnr/ppp1pppp/8/3p4/4P3/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 2", 0x0756b94461c50fb0},
        {"rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3", 0x22a48b5a8e47ff78},
        {"rnbqkbnr/p1pppppp/8/8/PpP4P/8/1P1PPPP1/RNBQKBNR b KQkq c3 0 3", 0x3c8123ea7b067637},
        {"rnbqkbnr/p1pppppp/8/8/P6P/R1p5/1P1PPPP1/1NBQKBNR b Kkq - 0 4", 0x5c3f9b829b279560},
    };
    for (const auto& c : cases) EXPECT_EQ(keyOf(c.fen), c.key) << c.fen;
}

using PolyglotFiles = BookFiles;

TEST_F(PolyglotFiles, EntriesBecomeLegalMovesInFileOrder) {
    const char* castling = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
    const char* promotion = "1n2k3/P7/8/8/8/8/8/4K3 w - - 0 1";
    directory.write("book.bin",
                    bookBytes({
                        {keyOf(castling), moveWord("e1h1"), 5},
                        {keyOf(castling), moveWord("e1a1"), 0},  // weight 0: never played
                        {keyOf(castling), moveWord("e1e3"), 9},  // illegal, as from a key collision
                        {keyOf(castling), 0, 9},                 // a1a1, no move
                        {keyOf(castling), moveWord("a1a8"), 2},
                        {keyOf(promotion), moveWord("a7b8", 1), 3},
                        {keyOf(promotion), moveWord("a7a8", 4), 2},
                        {keyOf(promotion), moveWord("e1e2", 4), 1},  // a promotion piece without a promotion
                        {keyOf(promotion), moveWord("a7a8"), 1},     // a promotion without its piece
                    }));
    polyglotBook reader(path("book.bin").c_str());
    EXPECT_EQ(movesOf(reader, castling), "e1g1 e1c1/64 a1a8");
    EXPECT_EQ(resultsOf(reader, "r3k2r/8/8/8/8/8/8/R4RK1 b kq - 1 1"), "5 0 0");
    EXPECT_EQ(resultsOf(reader, "R3k2r/8/8/8/8/8/8/4K2R b Kk - 0 1"), "2 0 0");
    EXPECT_EQ(movesOf(reader, promotion), "a7b8n a7a8q");
    EXPECT_EQ(resultsOf(reader, "1N2k3/8/8/8/8/8/8/4K3 b - - 0 1"), "3 0 0");
    EXPECT_EQ(resultsOf(reader, castling), "none");  // the last listed were the promotion's
    EXPECT_FALSE(reader.contains("4k3/8/8/8/8/8/8/4K3 w - - 0 1"));
}

TEST_F(PolyglotFiles, MissingOrDamagedFilesHoldNothingAndNeverCrash) {
    const std::string entries =
        bookBytes({{keyOf(startFen), moveWord("e2e4"), 3}, {keyOf(startFen), moveWord("d2d4"), 2}});
    const struct {
        const char* damage;
        bool present;
        std::string bytes, message, moves;
    } cases[] = {
        {"missing", false, "", "Error reading bin-file: " + path("book.bin") + "\n", "unreadable"},
        {"partial last entry", true, entries.substr(0, 24), "", "e2e4"},
        {"garbage", true, std::string(1000, '\xff'), "", "unreadable"},
    };
    for (const auto& c : cases) {
        std::remove(path("book.bin").c_str());
        if (c.present) directory.write("book.bin", c.bytes);
        polyglotBook reader(path("book.bin").c_str());
        expectProbes(reader, c.message, c.moves, c.damage);
    }
}

}  // namespace
