#include "book/ctgPosition.h"

#include <cctype>
#include <cstring>
#include <utility>

namespace {

// What each move byte means in the stored position, as ChessBase's books
// use it (steps compare modulo 8). Bytes 0x1a and 0xf9 both read Q2 0 -2 and
// no byte reads Q2 -2 0; which of the two is meant for that move is not
// known, so both are read as written here and the writer uses 0x1a.
constexpr ctgPosition::moveMeaning moveTable[256] = {
    /* 00 */ {'P', 5, 1, 1},
    {'N', 2, -2, -1},
    {},
    {'Q', 2, 2, 0},
    /* 04 */ {'P', 2, 0, 1},
    {'Q', 1, 0, 1},
    {'P', 4, -1, 1},
    {},
    /* 08 */ {'Q', 2, 4, 0},
    {'B', 2, -2, -2},
    {'K', 1, 0, -1},
    {},
    /* 0c */ {'P', 1, -1, 1},
    {'B', 1, 3, 3},
    {'R', 2, 3, 0},
    {'N', 1, -2, -1},
    /* 10 */ {},
    {},
    {'B', 1, -1, -1},
    {'K', 1, 0, 1},
    /* 14 */ {'P', 8, 1, 1},
    {'B', 1, -3, -3},
    {},
    {},
    /* 18 */ {'P', 7, 0, 1},
    {},
    {'Q', 2, 0, -2},
    {'B', 1, -1, 1},
    /* 1c */ {},
    {'B', 2, -1, -1},
    {},
    {},
    /* 20 */ {},
    {'R', 2, -1, 0},
    {'B', 2, -2, 2},
    {'Q', 2, -2, -2},
    /* 24 */ {'P', 8, -1, 1},
    {},
    {'B', 1, 1, -1},
    {'P', 3, -1, 1},
    /* 28 */ {'Q', 1, -3, -3},
    {'Q', 1, -2, 0},
    {'N', 2, 1, -2},
    {},
    /* 2c */ {},
    {'P', 6, 1, 1},
    {'B', 1, 1, 1},
    {'Q', 1, 1, 0},
    /* 30 */ {'N', 2, -1, -2},
    {'Q', 1, 3, 0},
    {'B', 2, -3, -3},
    {},
    /* 34 */ {'N', 1, 1, 2},
    {},
    {'N', 1, 2, 1},
    {'Q', 1, 0, 4},
    /* 38 */ {'Q', 2, 4, 4},
    {'Q', 1, -3, 0},
    {'B', 1, -2, -2},
    {'Q', 2, 3, -3},
    /* 3c */ {'B', 1, 3, -3},
    {},
    {},
    {},
    /* 40 */ {},
    {'Q', 2, -3, -3},
    {'Q', 1, 1, -1},
    {},
    /* 44 */ {'K', 1, 1, -1},
    {'Q', 1, 3, 3},
    {},
    {},
    /* 48 */ {},
    {},
    {'P', 8, 0, 2},
    {'Q', 1, 3, -3},
    /* 4c */ {'N', 2, 1, 2},
    {'Q', 2, 0, 1},
    {},
    {},
    /* 50 */ {'R', 1, 0, -2},
    {},
    {'R', 1, -2, 0},
    {},
    /* 54 */ {'B', 2, -1, 1},
    {'P', 3, 0, 1},
    {},
    {},
    /* 58 */ {},
    {},
    {},
    {},
    /* 5c */ {'P', 7, 1, 1},
    {},
    {},
    {'P', 5, 0, 2},
    /* 60 */ {},
    {'Q', 1, -2, -2},
    {'P', 2, 0, 2},
    {'Q', 2, 1, -1},
    /* 64 */ {},
    {},
    {'B', 1, -3, 3},
    {'K', 1, 1, 1},
    /* 68 */ {},
    {'R', 2, 0, -1},
    {'B', 1, 4, 4},
    {'K', 1, 2, 0},
    /* 6c */ {},
    {},
    {'R', 1, -3, 0},
    {'Q', 2, -1, -1},
    /* 70 */ {},
    {},
    {'B', 2, 1, -1},
    {},
    /* 74 */ {'Q', 1, 2, 0},
    {},
    {},
    {},
    /* 78 */ {},
    {'B', 2, 2, -2},
    {'R', 1, 0, 3},
    {'R', 2, 0, -2},
    /* 7c */ {'P', 3, 1, 1},
    {'R', 2, 0, 1},
    {'Q', 1, -3, 3},
    {'R', 1, 1, 0},
    /* 80 */ {'Q', 1, 2, -2},
    {'R', 1, 0, 1},
    {'P', 6, -1, 1},
    {},
    /* 84 */ {},
    {'N', 1, -1, 2},
    {'R', 1, -1, 0},
    {'R', 1, 0, -3},
    /* 88 */ {},
    {},
    {'N', 1, 1, -2},
    {'P', 1, 1, 1},
    /* 8c */ {'K', 1, -1, -1},
    {},
    {'Q', 2, -2, 2},
    {'Q', 1, -1, 0},
    /* 90 */ {},
    {},
    {'Q', 2, 1, 1},
    {},
    /* 94 */ {'Q', 1, 0, 3},
    {},
    {'P', 2, 1, 1},
    {'K', 1, -1, 0},
    /* 98 */ {'R', 1, 3, 0},
    {'R', 1, 0, 4},
    {'Q', 1, 0, -2},
    {'P', 3, 0, 2},
    /* 9c */ {},
    {'Q', 1, 0, 2},
    {},
    {'B', 2, 4, 4},
    /* a0 */ {'Q', 2, 0, 3},
    {},
    {'Q', 1, 2, 2},
    {'P', 8, 0, 1},
    /* a4 */ {},
    {'R', 2, 0, -3},
    {},
    {},
    /* a8 */ {},
    {'R', 2, 2, 0},
    {},
    {'Q', 2, 2, -2},
    /* ac */ {},
    {'R', 2, 4, 0},
    {'Q', 2, 3, 3},
    {},
    /* b0 */ {'Q', 2, 0, 4},
    {'P', 6, 0, 2},
    {'B', 1, 2, -2},
    {},
    /* b4 */ {},
    {'R', 2, -3, 0},
    {},
    {'Q', 1, 0, -3},
    /* b8 */ {},
    {'B', 2, 3, 3},
    {},
    {'P', 5, 0, 1},
    /* bc */ {'Q', 2, -3, 0},
    {'Q', 2, 0, 2},
    {'K', 1, 1, 0},
    {},
    /* c0 */ {},
    {'B', 1, 2, 2},
    {'B', 2, 2, 2},
    {'B', 1, -2, 2},
    /* c4 */ {'R', 2, 1, 0},
    {'R', 2, 0, 4},
    {'Q', 2, 0, -3},
    {'P', 7, -1, 1},
    /* c8 */ {'P', 7, 0, 2},
    {'Q', 2, 0, -1},
    {'B', 2, -3, 3},
    {'P', 6, 0, 1},
    /* cc */ {'B', 2, 3, -3},
    {'R', 1, 2, 0},
    {},
    {'P', 4, 0, 1},
    /* d0 */ {},
    {'P', 2, -1, 1},
    {'N', 2, 2, 1},
    {'N', 2, -2, 1},
    /* d4 */ {},
    {},
    {},
    {'Q', 1, -1, 1},
    /* d8 */ {'R', 2, -2, 0},
    {'Q', 1, -2, 2},
    {'N', 1, -1, -2},
    {'P', 1, 0, 2},
    /* dc */ {},
    {},
    {'P', 5, -1, 1},
    {'K', 1, -1, 1},
    /* e0 */ {'N', 2, 2, -1},
    {'R', 1, 0, -1},
    {},
    {'R', 2, 0, 3},
    /* e4 */ {},
    {'Q', 1, 4, 0},
    {'P', 4, 0, 2},
    {'Q', 1, 4, 4},
    /* e8 */ {'R', 1, 0, 2},
    {'N', 1, 2, -1},
    {},
    {'P', 4, 1, 1},
    /* ec */ {'P', 1, 0, 1},
    {'Q', 1, -1, -1},
    {'Q', 2, -1, 1},
    {'R', 1, 4, 0},
    /* f0 */ {'Q', 2, -1, 0},
    {'Q', 1, 1, 1},
    {},
    {'N', 2, -1, 2},
    /* f4 */ {'R', 2, 0, 2},
    {'B', 2, 1, 1},
    {'K', 1, -2, 0},
    {'N', 1, -2, 1},
    /* f8 */ {'Q', 2, 1, 0},
    {'Q', 2, 0, -2},
    {'Q', 2, 3, 0},
    {'Q', 2, 2, 2},
    /* fc */ {},
    {'Q', 1, 0, -1},
    {'Q', 2, -3, 3},
    {},
};

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
    // Without either field at least one zero bit follows the board, so a
    // board that ends on a byte boundary gets a whole zero byte.
    if (tail == 0) writer.put(0, 1);
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
    const moveMeaning& step = moveTable[code];
    if (step.piece == unusedByte) return false;
    const int storedFrom = nthPiece(stored, step.piece, step.ordinal);
    if (storedFrom < 0) return false;
    const int storedTo = squareOf((fileOf(storedFrom) + step.dx) & 7, (rankOf(storedFrom) + step.dy) & 7);
    from = otherFrame(storedFrom);
    to = otherFrame(storedTo);
    if (!real.isLegal(from, to)) return false;
    promotion = step.piece == 'P' && rankOf(storedTo) == 7 ? 'q' : 0;
    return true;
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

const ctgPosition::moveMeaning& ctgPosition::meaning(uint8_t code) { return moveTable[code]; }

int ctgPosition::moveByte(char piece, int ordinal, int dx, int dy) {
    for (int code = 0; code < 256; code++) {
        const moveMeaning& step = moveTable[code];
        if (step.piece == piece && step.ordinal == ordinal && (step.dx & 7) == (dx & 7) && (step.dy & 7) == (dy & 7))
            return code;
    }
    return -1;
}
