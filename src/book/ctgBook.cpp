#include "book/ctgBook.h"

#include <strings.h>
#include <cstring>

#include "platform/console.h"

namespace {

uint32_t bigEndian(const uint8_t* bytes, int count) {
    uint32_t value = 0;
    for (int i = 0; i < count; i++) value = value << 8 | bytes[i];
    return value;
}

// Opened unbuffered: every read is one page or one table entry anyway.
std::FILE* openForReading(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file) std::setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

// The file's size, or -1.
int64_t fileSize(std::FILE* file) {
    if (std::fseek(file, 0, SEEK_END) != 0) return -1;
    return std::ftell(file);
}

bool readAt(std::FILE* file, int64_t offset, uint8_t* out, size_t count) {
    return std::fseek(file, static_cast<long>(offset), SEEK_SET) == 0 && std::fread(out, 1, count, file) == count;
}

// The sibling file, with the extension in the case of the given one first.
std::FILE* openSibling(const std::string& stem, bool upperCase, const char* lower, const char* upper,
                       std::string& opened) {
    const char* extensions[2] = {upperCase ? upper : lower, upperCase ? lower : upper};
    for (const char* extension : extensions) {
        opened = stem + extension;
        if (std::FILE* file = openForReading(opened)) return file;
    }
    opened = stem + extensions[0];
    return nullptr;
}

}  // namespace

ctgBook::ctgBook(const char* path) : ctgPath(path) {
    const size_t length = ctgPath.size();
    if (length < 4 || strcasecmp(ctgPath.c_str() + length - 4, ".ctg") != 0) ctgPath += ".ctg";
}

ctgBook::~ctgBook() { close(); }

void ctgBook::close() {
    if (ctgFile) std::fclose(ctgFile);
    if (ctoFile) std::fclose(ctoFile);
    ctgFile = ctoFile = nullptr;
    for (cachedPage& cached : cache) cached.number = -1;
}

bool ctgBook::open() {
    if (ctgFile) return true;
    const std::string stem = ctgPath.substr(0, ctgPath.size() - 4);
    const bool upperCase = ctgPath[ctgPath.size() - 3] == 'C';
    ctgFile = openForReading(ctgPath);
    const int64_t ctgSize = ctgFile ? fileSize(ctgFile) : -1;
    // The header page and at least one data page.
    if (ctgSize < 2 * ctg::pageSize) {
        printInfo("Error reading cgt-file\n");
        close();
        return false;
    }
    ctoFile = openSibling(stem, upperCase, ".cto", ".CTO", ctoPath);
    const int64_t ctoSize = ctoFile ? fileSize(ctoFile) : -1;
    if (ctoSize < ctg::tableHeaderSize + 4) {
        printInfo("Error reading cto-file: %s\n", ctoPath.c_str());
        close();
        return false;
    }
    std::FILE* ctbFile = openSibling(stem, upperCase, ".ctb", ".CTB", ctbPath);
    if (ctbFile == nullptr) {
        printInfo("Error reading ctb-file: %s\n", ctbPath.c_str());
        close();
        return false;
    }
    std::fclose(ctbFile);
    dataPages = ctgSize / ctg::pageSize - 1;  // a partial last page is left out
    tableEntries = (ctoSize - ctg::tableHeaderSize) / 4;
    return true;
}

const uint8_t* ctgBook::page(int64_t number) {
    for (const cachedPage& cached : cache)
        if (cached.number == number) return cached.bytes;
    cachedPage& slot = cache[nextVictim];
    nextVictim = (nextVictim + 1) % cachedPages;
    slot.number = -1;
    if (!readAt(ctgFile, (number + 1) * ctg::pageSize, slot.bytes, ctg::pageSize)) return nullptr;
    slot.number = number;
    return slot.bytes;
}

const uint8_t* ctgBook::searchPage(uint32_t number, const ctgPosition& position) {
    if (number >= dataPages) return nullptr;
    const uint8_t* bytes = page(number);
    if (bytes == nullptr) return nullptr;
    const uint32_t entries = bigEndian(bytes, 2), used = bigEndian(bytes + 2, 2);
    if (used < ctg::pageHeaderSize || used > ctg::pageSize) return nullptr;
    uint32_t offset = ctg::pageHeaderSize;
    // A damaged entry ends the walk: nothing after it can be trusted.
    for (uint32_t i = 0; i < entries && offset < used; i++) {
        const uint32_t length = bytes[offset] & 0x1F;
        if (length == 0 || offset + length >= used) return nullptr;
        const uint32_t movesLength = bytes[offset + length];
        const uint32_t end = offset + length + movesLength + ctg::statisticsSize;
        if (movesLength % 2 == 0 || end > used) return nullptr;
        if (static_cast<int>(length) == position.length && std::memcmp(bytes + offset, position.encoding, length) == 0)
            return bytes + offset;
        offset = end;
    }
    return nullptr;
}

const uint8_t* ctgBook::find(const ctgPosition& position) {
    const uint32_t hash = position.hash();
    uint8_t slotBytes[4];
    // Level d holds 2^d slots from index 2^d - 1 on. An empty slot is skipped,
    // not taken as the end: ChessBase's books leave whole low levels empty.
    for (uint32_t levelMask = 0;; levelMask = 2 * levelMask + 1) {
        const int64_t slot = static_cast<int64_t>(hash & levelMask) + levelMask;
        if (slot >= tableEntries) return nullptr;
        if (readAt(ctoFile, ctg::tableHeaderSize + 4 * slot, slotBytes, 4)) {
            const uint32_t number = bigEndian(slotBytes, 4);
            if (number != ctg::emptySlot)
                if (const uint8_t* entry = searchPage(number, position)) return entry;
        }
        if (levelMask >= 0x7FFFFFFF) return nullptr;
    }
}

bool ctgBook::contains(const char* fen) {
    ctgPosition position;
    return open() && position.setup(fen) && find(position) != nullptr;
}

bool ctgBook::moves(const char* fen, entry* out, int capacity, int& count) {
    count = 0;
    ctgPosition position;
    const uint8_t* found = open() && position.setup(fen) ? find(position) : nullptr;
    if (found == nullptr) return false;
    const int movesLength = found[position.length];
    const uint8_t* pairs = found + position.length + 1;
    for (int i = 0; i < (movesLength - 1) / 2 && count < capacity; i++) {
        int from, to;
        char promotion;
        // A byte that names no legal move is dropped: a table error or
        // damaged data must never reach the front end as an illegal move.
        if (!position.decodeMove(pairs[2 * i], from, to, promotion)) continue;
        bookMoveText(from, to, promotion, out[count].move);
        out[count++].annotation = pairs[2 * i + 1];
    }
    return true;
}

bool ctgBook::results(const char* fen, int& wins, int& draws, int& losses) {
    ctgPosition position;
    const uint8_t* found = open() && position.setup(fen) ? find(position) : nullptr;
    if (found == nullptr) return false;
    const uint8_t* statistics = found + position.length + found[position.length];
    // The stored position has White to move; whoever moved into it is the other side.
    wins = static_cast<int>(bigEndian(statistics + ctg::winsJustMovedOffset, 3));
    losses = static_cast<int>(bigEndian(statistics + ctg::winsToMoveOffset, 3));
    draws = static_cast<int>(bigEndian(statistics + ctg::drawsOffset, 3));
    return true;
}
