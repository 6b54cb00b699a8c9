#include "ctgWriter.h"

#include <strings.h>
#include <algorithm>
#include <fstream>
#include <set>

#include "book/bookSource.h"
#include "book/ctgPosition.h"

namespace {

constexpr int pageRoom = ctg::pageSize - ctg::pageHeaderSize;
constexpr int highestTableLevel = 24;
constexpr const char* startFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

void putBigEndian(std::string& out, uint32_t value, int count) {
    for (int i = count - 1; i >= 0; i--) out += static_cast<char>(value >> (8 * i) & 0xFF);
}

bool writeFile(const std::string& path, const std::string& bytes, std::string& error) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.good()) error = "cannot write " + path;
    return file.good();
}

}  // namespace

bool ctgWriter::addGame(const bookGame& game, std::string& error) {
    std::set<std::string> seen;  // a position repeated within a game counts once
    const size_t plies = std::min(game.plies.size(), static_cast<size_t>(std::max(maxPlies, 0)));
    for (size_t i = 0; i <= plies; i++) {
        const std::string& fen = i < game.plies.size() ? game.plies[i].fen : game.finalFen;
        ctgPosition position;
        if (!position.setup(fen.c_str())) {
            error = "the position " + fen + " cannot be stored";
            return false;
        }
        const std::string encoding(reinterpret_cast<const char*>(position.encoding), position.length);
        record& entry = positions[encoding];
        if (seen.insert(encoding).second) {
            entry.games++;
            // The stored position has the real side to move as White.
            const bool whiteToMove = !position.flipped;
            if (game.result == drawn) entry.draws++;
            else if (game.result == whiteWins) (whiteToMove ? entry.winsToMove : entry.winsJustMoved)++;
            else if (game.result == blackWins) (whiteToMove ? entry.winsJustMoved : entry.winsToMove)++;
        }
        if (i == plies) break;
        const bookGamePly& ply = game.plies[i];
        const int code = position.encodeMove(ply.from, ply.to, ply.promotion);
        if (code < 0) {
            char text[6];
            bookMoveText(ply.from, ply.to, ply.promotion, text);
            error = "the move " + std::string(text) + " at ply " + std::to_string(i + 1) +
                    " cannot be stored in a CTG book";
            return false;
        }
        auto& moves = entry.moves;
        size_t at = 0;
        while (at < moves.size() && moves[at] != code) at += 2;
        if (at == moves.size()) {
            if (moves.size() / 2 == maxBookMoves) continue;  // as many as a reader takes
            moves.insert(moves.end(), {static_cast<uint8_t>(code), 0});
        }
        if (ply.annotation) moves[at + 1] = static_cast<uint8_t>(ply.annotation);
    }
    return true;
}

bool ctgWriter::write(const std::string& ctgPath, std::string& error) {
    if (ctgPath.size() < 4 || strcasecmp(ctgPath.c_str() + ctgPath.size() - 4, ".ctg") != 0) {
        error = "the book's name must end in .ctg";
        return false;
    }
    struct pendingEntry {
        uint32_t hash;
        std::string bytes;
    };
    std::vector<pendingEntry> entries;
    uint32_t mostGames = 0;
    for (const auto& [encoding, entry] : positions) {
        if (entry.games < static_cast<uint32_t>(minGames)) continue;
        std::string bytes = encoding;
        bytes += static_cast<char>(1 + entry.moves.size());
        bytes.append(entry.moves.begin(), entry.moves.end());
        std::string statistics;
        putBigEndian(statistics, entry.games, 3);
        putBigEndian(statistics, entry.winsToMove, 3);
        putBigEndian(statistics, entry.winsJustMoved, 3);
        putBigEndian(statistics, entry.draws, 3);
        statistics.resize(ctg::statisticsSize, '\0');
        bytes += statistics;
        entries.push_back(
            {ctgPosition::hash(reinterpret_cast<const uint8_t*>(encoding.data()), static_cast<int>(encoding.size())),
             bytes});
        mostGames = std::max(mostGames, entry.games);
    }
    ctgPosition start;
    start.setup(startFen);
    const auto startEntry = positions.find(std::string(reinterpret_cast<const char*>(start.encoding), start.length));
    const uint32_t gameCount =
        startEntry != positions.end() && startEntry->second.games >= static_cast<uint32_t>(minGames)
            ? startEntry->second.games
            : mostGames;

    // The smallest level at which every slot's positions fit in one page.
    int level = std::max(tableLevel, 0);
    std::vector<uint32_t> used;
    for (;; level++) {
        if (level > highestTableLevel) {
            error = "too many positions share one hash value";
            return false;
        }
        used.assign(size_t{1} << level, 0);
        bool fits = true;
        for (const pendingEntry& entry : entries) {
            uint32_t& slotBytes = used[entry.hash & (used.size() - 1)];
            slotBytes += static_cast<uint32_t>(entry.bytes.size());
            fits = fits && slotBytes <= pageRoom;
        }
        if (fits) break;
    }
    const uint32_t slots = static_cast<uint32_t>(used.size());
    // Lower levels point at a valid page, so that a reader that stops at
    // the first empty slot still reaches this level.
    std::vector<uint32_t> table(2 * slots - 1, 0);
    std::vector<std::string> pages;
    for (uint32_t slot = 0; slot < slots; slot++) {
        const bool onlyPage = slots == 1;
        if (used[slot] == 0 && !onlyPage) {
            table[slots - 1 + slot] = ctg::emptySlot;
            continue;
        }
        table[slots - 1 + slot] = static_cast<uint32_t>(pages.size());
        std::string body;
        uint32_t count = 0;
        for (const pendingEntry& entry : entries)
            if ((entry.hash & (slots - 1)) == slot) body += entry.bytes, count++;
        std::string page;
        putBigEndian(page, count, 2);
        putBigEndian(page, ctg::pageHeaderSize + static_cast<uint32_t>(body.size()), 2);
        page += body;
        page.resize(ctg::pageSize, '\0');
        pages.push_back(page);
    }

    std::string ctgBytes(ctg::pageSize, '\0');
    std::string count;
    putBigEndian(count, gameCount, 4);
    ctgBytes.replace(ctg::gameCountOffset, 4, count);
    for (const std::string& page : pages) ctgBytes += page;
    std::string ctoBytes;
    putBigEndian(ctoBytes, ctg::tableTag, 4);
    putBigEndian(ctoBytes, static_cast<uint32_t>(table.size()), 4);
    ctoBytes.resize(ctg::tableHeaderSize, '\0');
    for (const uint32_t page : table) putBigEndian(ctoBytes, page, 4);
    // Readers that keep to the slot bounds walk every level; the page map has
    // one bit per .ctg page, the header page included: all in use.
    std::string ctbBytes;
    putBigEndian(ctbBytes, ctg::pageMapTag, 4);
    putBigEndian(ctbBytes, 0, 4);
    putBigEndian(ctbBytes, static_cast<uint32_t>(table.size() - 1), 4);
    const size_t pageMap = ctbBytes.size();
    ctbBytes.resize(pageMap + (pages.size() + 1 + 7) / 8, '\0');
    for (size_t page = 0; page <= pages.size(); page++)
        ctbBytes[pageMap + page / 8] |= static_cast<char>(0x80 >> page % 8);

    const std::string stem = ctgPath.substr(0, ctgPath.size() - 4);
    const bool upperCase = ctgPath[ctgPath.size() - 3] == 'C';
    storedPositions = static_cast<int>(entries.size());
    dataPages = static_cast<int>(pages.size());
    return writeFile(ctgPath, ctgBytes, error) && writeFile(stem + (upperCase ? ".CTO" : ".cto"), ctoBytes, error) &&
           writeFile(stem + (upperCase ? ".CTB" : ".ctb"), ctbBytes, error);
}
