#include "book/ctgBook.h"

#include "bookFiles.h"

namespace {

using CtgBook = BookFiles;

std::string bytes(const std::string& hex) {
    std::string out;
    for (size_t i = 0; i < hex.size(); i += 3) out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return out;
}

// The worked example of the format: 1.e4 and 1.d4 from ten games, 1...e5
// (marked "!") and 1...c5, the position after 1.d4 too rare to be kept.
TEST_F(CtgBook, WriterMakesTheKnownSmallBookByteForByte) {
    const std::string games =
        "e2e4 e7e5$1 1-0\ne2e4 e7e5 1-0\ne2e4 e7e5 1-0\ne2e4 c7c5 0-1\ne2e4 c7c5 1/2-1/2\n"
        "e2e4 c7c5 1/2-1/2\nd2d4 1-0\nd2d4 1-0\nd2d4 0-1\nd2d4 0-1\n";
    ctgWriter writer;
    writer.maxPlies = 2;
    writer.minGames = 5;
    writeCtg(games, writer);
    std::string page = bytes(
        "00 02 00 7c 56 b6 0f 79 60 f3 a6 0f 58 b0 78 e0 c1 e1 a6 0f 59 60 f3 b6 0f 7f "
        "05 5f 00 e6 00 00 00 0a 00 00 05 00 00 03 00 00 02");
    page.resize(4 + 60, '\0');
    page += bytes(
        "56 b6 0f 79 60 f3 a6 0f 58 b0 78 e0 c7 21 a6 0f 59 60 f3 b6 0f 7f "
        "05 5f 01 9b 00 00 00 06 00 00 01 00 00 03 00 00 02");
    page.resize(4096, '\0');
    std::string header(4096, '\0');
    header[31] = 10;
    const std::string ctg = directory.read("book.ctg");
    EXPECT_TRUE(ctg == header + page) << "differs from byte "
                                      << std::mismatch(ctg.begin(), ctg.end(), (header + page).begin()).first -
                                             ctg.begin();
    EXPECT_EQ(directory.read("book.cto"), bytes("00 10 00 01 00 00 00 01 00 00 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(directory.read("book.ctb"), bytes("00 0c 00 01 00 00 00 00 00 00 00 00 c0"));

    // The same two positions on level 3 of the index, in two pages.
    for (int level : {0, 3}) {
        writer.tableLevel = level;
        writeCtg(games, writer);
        ctgBook reader(path("book.ctg").c_str());
        EXPECT_EQ(movesOf(reader, startFen), "e2e4 d2d4");
        EXPECT_EQ(resultsOf(reader, startFen), "3 2 5");
        EXPECT_EQ(movesOf(reader, fenAfter("e2e4").c_str()), "e7e5/1 c7c5");
        EXPECT_EQ(resultsOf(reader, fenAfter("e2e4").c_str()), "3 2 1");
        EXPECT_FALSE(reader.contains(fenAfter("d2d4").c_str()));
    }
    // Level 3: 1.e4 in slot 10, the initial position in slot 14, pages in slot order.
    const std::string empty = bytes("ff ff ff ff ff ff ff ff ff ff ff ff");
    EXPECT_EQ(directory.read("book.cto"), bytes("00 10 00 01 00 00 00 0f 00 00 00 00 00 00 00 00") +
                                              std::string(7 * 4, '\0') + empty + std::string(4, '\0') + empty +
                                              bytes("00 00 00 01"));
    EXPECT_EQ(directory.read("book.ctb"), bytes("00 0c 00 01 00 00 00 00 00 00 00 0e e0"));
}

// Black to move, mirrored positions, castling both ways, en passant, a
// promotion, annotation bytes, and a move into a position left out.
TEST_F(CtgBook, MovesAndCountsComeBackInBookOrder) {
    ctgWriter writer;
    writer.minGames = 2;
    writeCtg(
        "[FEN \"8/2k1P3/8/8/8/8/8/6K1 w - - 0 1\"] 1. e8=Q Kb6 2. Qe3+ 1-0\n"
        "[FEN \"8/2k1P3/8/8/8/8/8/6K1 w - - 0 1\"] 1. e8=Q Kb7?! (1... Kb6 {better}) 1/2-1/2\n"
        "1. e4 a6 2. e5 d5 3. exd6 $75 e6 4. Nf3 Nf6 5. Bc4 Be7 6. O-O O-O 1-0\n"
        "1. e4 a6 2. e5 d5 3. exd6 1-0\n"
        "1. d4 d5 2. Bf4 Bf5 3. Nc3 Nc6 4. Qd2 Qd7 5. O-O-O O-O-O 0-1\n"
        "1. d4 d5 2. Bf4 Bf5 3. Nc3 Nc6 4. Qd2 Qd7 5. O-O-O O-O-O 1/2-1/2\n"
        "1. d4 d5 2. Nf3 0-1\n",
        writer, true);
    ctgBook reader(path("book.ctg").c_str());
    const std::string promotion = "8/2k1P3/8/8/8/8/8/6K1 w - - 0 1";
    const std::string afterPromotion = fenAfter("e7e8q", promotion.c_str());  // Black to move, mirrored
    const struct {
        std::string fen, moves, results;
    } cases[] = {
        {startFen, "e2e4 d2d4", "2 1 2"},
        {fenAfter("e2e4"), "a7a6", "2 0 0"},
        {fenAfter("e2e4 a7a6 e4e5 d7d5"), "e5d6/75", "0 0 2"},
        {fenAfter("e2e4 a7a6 e4e5 d7d5 e5d6 e7e6 g1f3 g8f6 f1c4 f8e7"), "", "none"},  // one game only
        {fenAfter("d2d4 d7d5"), "c1f4 g1f3", "2 1 0"},
        {fenAfter("d2d4 d7d5 c1f4 c8f5 b1c3 b8c6 d1d2 d8d7"), "e1c1", "1 1 0"},
        {fenAfter("d2d4 d7d5 c1f4 c8f5 b1c3 b8c6 d1d2 d8d7 e1c1"), "e8c8", "0 1 1"},
        {promotion, "e7e8q", "0 1 1"},
        {afterPromotion, "c7b6 c7b7/6", "1 1 0"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(reader.contains(c.fen.c_str()), c.results != "none") << c.fen;
        EXPECT_EQ(movesOf(reader, c.fen.c_str()), c.results == "none" ? "unreadable" : c.moves) << c.fen;
        EXPECT_EQ(resultsOf(reader, c.fen.c_str()), c.results) << c.fen;
    }
}

// A damaged or missing book answers "not in the book", with at most one
// message a probe and never an illegal move.
TEST_F(CtgBook, DamagedBooksAreReportedOnceAndHoldNothing) {
    writeCtg("e2e4 e7e5 1-0\nd2d4 d7d5 0-1\n");
    const std::string ctg = directory.read("book.ctg"), cto = directory.read("book.cto"),
                      ctb = directory.read("book.ctb");
    ctgPosition start;
    start.setup(startFen);
    const size_t startEntry = ctg.find(std::string(reinterpret_cast<const char*>(start.encoding), start.length));
    ASSERT_GT(startEntry, 4096u);
    auto withByte = [](std::string bytes, size_t at, char value) {
        bytes[at] = value;
        return bytes;
    };
    const struct {
        const char* damage;
        std::string ctg, cto, ctb, message, startMoves;
    } cases[] = {
        {"truncated .ctg", ctg.substr(0, 5000), cto, ctb, "Error reading cgt-file\n", "unreadable"},
        {"short .cto", ctg, cto.substr(0, 12), ctb, "Error reading cto-file: " + path("book.cto") + "\n", "unreadable"},
        {"no .ctb", ctg, cto, "", "Error reading ctb-file: " + path("book.ctb") + "\n", "unreadable"},
        {"bytes in use beyond the page", withByte(ctg, 4096 + 2, 0x20), cto, ctb, "", "unreadable"},
        {"even moves length", withByte(ctg, startEntry + 22, 4), cto, ctb, "", "unreadable"},
        {"index past the end", ctg, withByte(cto, 19, 9), ctb, "", "unreadable"},
        {"illegal move byte", withByte(ctg, startEntry + 23, 0x00), cto, ctb, "", "d2d4"},
    };
    for (const auto& c : cases) {
        for (const char* name : {"book.ctg", "book.cto", "book.ctb"}) std::remove(path(name).c_str());
        if (!c.ctg.empty()) directory.write("book.ctg", c.ctg);
        if (!c.cto.empty()) directory.write("book.cto", c.cto);
        if (!c.ctb.empty()) directory.write("book.ctb", c.ctb);
        ctgBook reader(path("book.ctg").c_str());
        expectProbes(reader, c.message, c.startMoves, c.damage);
    }
}

}  // namespace
