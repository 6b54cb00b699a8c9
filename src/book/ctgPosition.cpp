#include "book/ctgPosition.h"

#include <array>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

// What each move byte means in the stored position: a white piece by type
// and ordinal (counted in encoding order: a1, a2, ..., a8, b1, ...), and a
// step in files and ranks that wraps around the board. Readings after a "|"
// are tried in turn when the first gives no legal move; the meanings of
// these bytes are the least certain part of the format. A byte starting with
// "?" is used by the format for a move nobody has placed yet: it is read by
// trying the unplaced moves, and never written.
constexpr const char* moveMeanings[256] = {
    /* 00 */ "P5 +1 +1",
    "N2 -2 -1",
    nullptr,
    "Q2 +2 0|N2 +2 -1|Q2 -3 +3|Q2 -1 0|R2 0 +2",
    /* 04 */ "P2 0 +1",
    "Q1 0 +1",
    "P4 -1 +1",
    nullptr,
    /* 08 */ "Q2 +4 0",
    "B2 +6 +6",
    "K1 0 -1",
    nullptr,
    /* 0c */ "P1 -1 +1",
    "B1 +3 +3",
    "R2 +3 0",
    "N1 -2 -1",
    /* 10 */ nullptr,
    nullptr,
    "B1 +7 +7",
    "K1 0 +1",
    /* 14 */ "P8 +1 +1",
    "B1 +5 +5",
    nullptr,
    nullptr,
    /* 18 */ "P7 0 +1",
    nullptr,
    "Q2 0 +6",
    "B1 -1 +1",
    /* 1c */ nullptr,
    "B2 +7 +7",
    nullptr,
    nullptr,
    /* 20 */ nullptr,
    "R2 +7 0",
    "B2 -2 +2",
    "Q2 +6 +6",
    /* 24 */ "P8 -1 +1",
    nullptr,
    "B1 -7 +7",
    "P3 -1 +1",
    /* 28 */ "Q1 +5 +5",
    "Q1 +6 0",
    "N2 +1 -2",
    nullptr,
    /* 2c */ nullptr,
    "P6 +1 +1",
    "B1 +1 +1",
    "Q1 +1 0",
    /* 30 */ "N2 -1 -2",
    "Q1 +3 0",
    "B2 +5 +5",
    nullptr,
    /* 34 */ "N1 +1 +2",
    nullptr,
    "N1 +2 +1",
    "Q1 0 +4",
    /* 38 */ "Q2 -4 +4",
    "Q1 +5 0",
    "B1 +6 +6",
    "Q2 -5 +5",
    /* 3c */ "B1 -5 +5",
    nullptr,
    nullptr,
    nullptr,
    /* 40 */ nullptr,
    "Q2 +5 +5",
    "Q1 -7 +7",
    nullptr,
    /* 44 */ "K1 +1 -1",
    "Q1 +3 +3",
    nullptr,
    nullptr,
    /* 48 */ nullptr,
    nullptr,
    "P8 0 +2",
    "Q1 -5 +5",
    /* 4c */ "N2 +1 +2",
    "Q2 0 +1",
    nullptr,
    nullptr,
    /* 50 */ "R1 0 +6",
    nullptr,
    "R1 +6 0",
    nullptr,
    /* 54 */ "B2 -1 +1",
    "P3 0 +1",
    nullptr,
    nullptr,
    /* 58 */ nullptr,
    nullptr,
    nullptr,
    nullptr,
    /* 5c */ "P7 +1 +1",
    nullptr,
    nullptr,
    "P5 0 +2",
    /* 60 */ nullptr,
    "Q1 +6 +6",
    "P2 0 +2",
    "Q2 -7 +7",
    /* 64 */ nullptr,
    nullptr,
    "B1 -3 +3",
    "K1 +1 +1",
    /* 68 */ nullptr,
    "R2 0 +7",
    "B1 +4 +4",
    "K1 +2 0",
    /* 6c */ nullptr,
    nullptr,
    "R1 +5 0",
    "Q2 +7 +7",
    /* 70 */ nullptr,
    nullptr,
    "B2 -7 +7",
    nullptr,
    /* 74 */ "Q1 +2 0",
    nullptr,
    nullptr,
    nullptr,
    /* 78 */ nullptr,
    "B2 -6 +6",
    "R1 0 +3",
    "R2 0 +6",
    /* 7c */ "P3 +1 +1",
    "R2 0 +1",
    "Q1 -3 +3",
    "R1 +1 0",
    /* 80 */ "Q1 -6 +6",
    "R1 0 +1",
    "P6 -1 +1",
    nullptr,
    /* 84 */ nullptr,
    "N1 -1 +2",
    "R1 +7 0",
    "R1 0 +5",
    /* 88 */ nullptr,
    nullptr,
    "N1 +1 -2",
    "P1 +1 +1",
    /* 8c */ "K1 -1 -1",
    nullptr,
    "Q2 -2 +2",
    "Q1 +7 0",
    /* 90 */ nullptr,
    nullptr,
    "Q2 +1 +1",
    nullptr,
    /* 94 */ "Q1 0 +3",
    nullptr,
    "P2 +1 +1",
    "K1 -1 0",
    /* 98 */ "R1 +3 0",
    "R1 0 +4",
    "Q1 0 +6",
    "P3 0 +2",
    /* 9c */ nullptr,
    "Q1 0 +2",
    nullptr,
    "B2 -4 +4",
    /* a0 */ "Q2 0 +3",
    nullptr,
    "Q1 +2 +2",
    "P8 0 +1",
    /* a4 */ nullptr,
    "R2 0 +5",
    nullptr,
    nullptr,
    /* a8 */ nullptr,
    "R2 +2 0",
    nullptr,
    "Q2 -6 +6",
    /* ac */ nullptr,
    "R2 +4 0",
    "Q2 +3 +3",
    nullptr,
    /* b0 */ "Q2 0 +4",
    "P6 0 +2",
    "B1 -6 +6",
    nullptr,
    /* b4 */ nullptr,
    "R2 +5 0",
    nullptr,
    "Q1 0 +5",
    /* b8 */ nullptr,
    "B2 +3 +3",
    nullptr,
    "N1 -2 +1",
    /* bc */ "Q2 +5 0",
    "Q2 0 +2",
    "K1 +1 0",
    nullptr,
    /* c0 */ nullptr,
    "B1 +2 +2",
    "B2 +2 +2",
    "B1 -2 +2",
    /* c4 */ "R2 +1 0",
    "R2 0 +4",
    "Q2 0 +5",
    "P7 -1 +1",
    /* c8 */ "P7 0 +2",
    "Q2 0 +7",
    "B2 -3 +3",
    "P6 0 +1",
    /* cc */ "B2 -5 +5",
    "R1 +2 0",
    nullptr,
    "P4 0 +1",
    /* d0 */ nullptr,
    "P2 -1 +1",
    "N2 +2 +1",
    "N2 -2 +1",
    /* d4 */ nullptr,
    nullptr,
    nullptr,
    "Q1 -1 +1",
    /* d8 */ "R2 +6 0",
    "Q1 -2 +2",
    "N1 -1 -2",
    "P1 0 +2",
    /* dc */ nullptr,
    nullptr,
    "P5 0 +1",
    "K1 -1 +1",
    /* e0 */ "N2 -1 +2",
    "R1 0 +7",
    nullptr,
    "R2 0 +3",
    /* e4 */ nullptr,
    "Q1 +4 0",
    "P5 -1 +1",
    nullptr,
    /* e8 */ "R1 0 +2",
    "N1 +2 -1",
    nullptr,
    "P4 0 +2",
    /* ec */ "Q1 -4 +4",
    "Q1 +1 +1",
    "Q2 +2 0|N2 +2 -1|Q2 -3 +3|Q2 -1 0|R2 0 +2",
    "B1 -4 +4",
    /* f0 */ "P1 0 +1",
    "?N2 +2 -1|Q2 -3 +3|Q2 -1 0|R2 0 +2",
    "B2 +1 +1|K1 -2 0",
    "Q2 +4 +4",
    /* f4 */ "?N2 +2 -1|Q2 -3 +3|Q2 -1 0|R2 0 +2",
    "R1 +4 0",
    "K1 -2 0|Q2 -3 +3",
    "?N2 +2 -1|Q2 -3 +3|Q2 -1 0|R2 0 +2",
    /* f8 */ "Q2 +2 +2",
    "Q1 0 +7",
    "Q2 +6 0",
    "Q2 +3 0",
    /* fc */ "Q2 -1 +1",
    "Q1 +7 +7",
    "Q2 +1 0",
    "P4 +1 +1",
};

struct stepMeaning {
    char piece;
    int ordinal;
    int dx, dy;  // modulo 8
};

struct byteMeanings {
    stepMeaning readings[5];
    int count;
    bool writable;
};

const std::array<byteMeanings, 256>& moveTable() {
    static const auto table = [] {
        std::array<byteMeanings, 256> parsed{};
        for (int code = 0; code < 256; code++) {
            const char* text = moveMeanings[code];
            if (text == nullptr) continue;
            byteMeanings& meanings = parsed[code];
            meanings.writable = *text != '?';
            if (!meanings.writable) text++;
            while (*text) {
                stepMeaning& step = meanings.readings[meanings.count++];
                step.piece = text[0];
                step.ordinal = text[1] - '0';
                char* end;
                step.dx = static_cast<int>(std::strtol(text + 2, &end, 10)) & 7;
                step.dy = static_cast<int>(std::strtol(end, &end, 10)) & 7;
                text = *end == '|' ? end + 1 : end;
            }
        }
        return parsed;
    }();
    return table;
}

constexpr uint32_t hashConstants[64] = {
    0x3100d2bf, 0x3118e3de, 0x34ab1372, 0x2807a847, 0x1633f566, 0x2143b359, 0x26d56488, 0x3b9e6f59,
    0x37755656, 0x3089ca7b, 0x18e92d85, 0x0cd0e9d8, 0x1a9e3b54, 0x3eaa902f, 0x0d9bfaae, 0x2f32b45b,
    0x31ed6102, 0x3d3c8398, 0x146660e3, 0x0f8d4b76, 0x02c77a5f, 0x146c8799, 0x1c47f51f, 0x249f8f36,
    0x24772043, 0x1fbc1e4d, 0x1e86b3fa, 0x37df36a6, 0x16ed30e4, 0x02c3148e, 0x216e5929, 0x0636b34e,
    0x317f9f56, 0x15f09d70, 0x131026fb, 0x38c784b1, 0x29ac3305, 0x2b485dc5, 0x3c049ddc, 0x35a9fbcd,
    0x31d5373b, 0x2b246799, 0x0a2923d3, 0x08a96e9d, 0x30031a9f, 0x08f525b5, 0x33611c06, 0x2409db98,
    0x0ca4feb2, 0x1000b71e, 0x30566e32, 0x39447d31, 0x194e3752, 0x08233a95, 0x0f38fe36, 0x29c7cd57,
    0x0f7b3a39, 0x328e8a16, 0x1e7d1388, 0x0fba78f5, 0x274c7e7c, 0x1e8be65c, 0x2fa0b0bb, 0x1eb6c371,
};

// Position in the encoding order of the board: file by file from a1.
int encodingOrder(int square) { return 8 * fileOf(square) + rankOf(square); }

// The ordinal-th white piece of the type in encoding order, or -1.
int nthPiece(const bookBoard& position, char type, int ordinal) {
    for (int order = 0; order < 64; order++) {
        const int square = squareOf(order / 8, order % 8);
        if (position.piece[square] == type && --ordinal == 0) return square;
    }
    return -1;
}

// Most significant bit first, into a zeroed buffer of a fixed size.
class bitWriter {
public:
    uint8_t* out;
    int capacity;
    int bits = 0;
    bool overflow = false;

    void put(unsigned value, int count) {
        for (int i = count - 1; i >= 0; i--, bits++) {
            if (bits >= capacity * 8) {
                overflow = true;
                return;
            }
            if (value >> i & 1) out[bits / 8] |= static_cast<uint8_t>(0x80 >> bits % 8);
        }
    }
};

}  // namespace

uint32_t ctgPosition::hash(const uint8_t* bytes, int count) {
    uint32_t h = 0;
    unsigned step = 0;
    for (int i = 0; i < count; i++) {
        for (const unsigned nibble : {bytes[i] & 15u, static_cast<unsigned>(bytes[i]) >> 4}) {
            step += 4 * (15 - nibble) + 1;
            h += hashConstants[step & 63];
        }
    }
    return h;
}

bool ctgPosition::setup(const char* fen) {
    if (!real.setup(fen)) return false;
    stored = real;
    flipped = !real.whiteToMove;
    mirrored = false;
    if (flipped) {
        for (int square = 0; square < 64; square++) {
            const char c = real.piece[squareOf(fileOf(square), 7 - rankOf(square))];
            stored.piece[square] = static_cast<char>(std::isupper(c) ? std::tolower(c) : std::toupper(c));
        }
        stored.castling = (real.castling & 3) << 2 | (real.castling >> 2 & 3);
        stored.whiteToMove = true;
    }
    const char* king = static_cast<const char*>(std::memchr(stored.piece, 'K', sizeof stored.piece));
    if (stored.castling == 0 && fileOf(static_cast<int>(king - stored.piece)) < 4) {
        mirrored = true;
        for (int rank = 0; rank < 8; rank++)
            for (int file = 0; file < 4; file++)
                std::swap(stored.piece[squareOf(file, rank)], stored.piece[squareOf(7 - file, rank)]);
        if (stored.enPassantFile != bookBoard::noEnPassant) stored.enPassantFile = 7 - stored.enPassantFile;
    }
    return encode();
}

bool ctgPosition::encode() {
    std::memset(encoding, 0, sizeof encoding);
    bitWriter writer{encoding, maxEncodingLength};
    writer.bits = 8;  // the header byte comes last
    for (int order = 0; order < 64; order++) {
        const char c = stored.piece[squareOf(order / 8, order % 8)];
        const unsigned black = std::islower(c) ? 1 : 0;
        switch (std::toupper(c)) {
        case 'P': writer.put(0b110 | black, 3); break;
        case 'N': writer.put(0b10010 | black, 5); break;
        case 'B': writer.put(0b10100 | black, 5); break;
        case 'R': writer.put(0b10110 | black, 5); break;
        case 'Q': writer.put(0b100010 | black, 6); break;
        case 'K': writer.put(0b100000 | black, 6); break;
        default: writer.put(0, 1); break;
        }
    }
    const bool enPassant = stored.enPassantFile != bookBoard::noEnPassant, castling = stored.castling != 0;
    const int tail = (enPassant ? 3 : 0) + (castling ? 4 : 0);
    while ((writer.bits + tail) % 8) writer.put(0, 1);
    if (enPassant) writer.put(static_cast<unsigned>(stored.enPassantFile), 3);
    if (castling) {
        const int c = stored.castling;
        writer.put((c & bookBoard::blackShort ? 8 : 0) | (c & bookBoard::blackLong ? 4 : 0) |
                       (c & bookBoard::whiteShort ? 2 : 0) | (c & bookBoard::whiteLong ? 1 : 0),
                   4);
    }
    if (writer.overflow) return false;
    length = writer.bits / 8;
    encoding[0] = static_cast<uint8_t>(length | (enPassant ? 0x20 : 0) | (castling ? 0x40 : 0));
    return true;
}

bool ctgPosition::decodeMove(uint8_t code, int& from, int& to, char& promotion) const {
    const byteMeanings& meanings = moveTable()[code];
    for (int i = 0; i < meanings.count; i++) {
        const stepMeaning& step = meanings.readings[i];
        const int storedFrom = nthPiece(stored, step.piece, step.ordinal);
        if (storedFrom < 0) continue;
        const int storedTo = squareOf((fileOf(storedFrom) + step.dx) & 7, (rankOf(storedFrom) + step.dy) & 7);
        from = otherFrame(storedFrom);
        to = otherFrame(storedTo);
        if (!real.isLegal(from, to)) continue;
        promotion = step.piece == 'P' && rankOf(storedTo) == 7 ? 'q' : 0;
        return true;
    }
    return false;
}

int ctgPosition::encodeMove(int from, int to, char promotion) const {
    if (promotion && std::tolower(promotion) != 'q') return -1;
    const int storedFrom = otherFrame(from), storedTo = otherFrame(to);
    const char type = stored.piece[storedFrom];
    if (!std::isupper(type)) return -1;
    int ordinal = 0;
    for (int square = 0; square < 64; square++)
        if (stored.piece[square] == type && encodingOrder(square) <= encodingOrder(storedFrom)) ordinal++;
    return moveByte(type, ordinal, fileOf(storedTo) - fileOf(storedFrom), rankOf(storedTo) - rankOf(storedFrom));
}

int ctgPosition::moveByte(char piece, int ordinal, int dx, int dy) {
    for (int code = 0; code < 256; code++) {
        const byteMeanings& meanings = moveTable()[code];
        if (!meanings.writable || meanings.count == 0) continue;
        const stepMeaning& step = meanings.readings[0];
        if (step.piece == piece && step.ordinal == ordinal && step.dx == (dx & 7) && step.dy == (dy & 7)) return code;
    }
    return -1;
}
